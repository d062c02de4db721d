#include "ScanRowText.h"

std::wstring wrb::ScanRowText(const ScanRow& row, const ScanGroupValues& values) {
    switch (row.kind) {
        case ScanRowKind::Bit:
            return (values.flags & row.bits) != 0 ? L"1" : L"0";
        case ScanRowKind::Int:
            return std::to_wstring(static_cast<int32_t>(values.*row.number));
        case ScanRowKind::Choice:
            return std::to_wstring(static_cast<int32_t>(row.choice->ValueOf(values.flags)));
        case ScanRowKind::Text:
        case ScanRowKind::CustomActionPair:
            return values.*row.text;
        case ScanRowKind::Uid:
        case ScanRowKind::Empty:
            break;
    }
    return {};
}
