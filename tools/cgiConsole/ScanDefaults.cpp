#include "ScanDefaults.h"

#include <algorithm>

#include "ScanCfgIni.h"
#include "Text.h"

namespace wrb {
namespace {

// At most nine digits, so that the number fits; 0 to 999999999, or a value that no field accepts.
uint32_t NumberOf(std::wstring_view text) {
    const bool digits = !text.empty() && text.size() < 10 && text.find_first_not_of(L"0123456789") == text.npos;
    return digits ? static_cast<uint32_t>(ParseInt32(text)) : UINT32_MAX;
}

bool IsFormText(std::wstring_view text) {
    const auto isControl = [](wchar_t character) { return character < L' ' || character == 0x7F; };
    return text.size() <= kLongestFormText && std::ranges::none_of(text, isControl) && SurvivesAnIniFile(text);
}

bool SetChoice(const ScanChoice& choice, uint32_t number, uint32_t& flags) {
    for (const ScanChoice::Arm& arm : choice.stored) {
        flags &= ~arm.bits;
    }
    flags |= choice.BitsOf(number);
    return choice.ValueOf(flags) == number;
}

}  // namespace

std::vector<uint32_t> FieldChoices(const ScanRow& row) {
    if (row.kind != ScanRowKind::Choice) {
        return {0, 1};
    }
    std::vector<uint32_t> numbers{row.choice->otherwise};
    for (const ScanChoice::Arm& arm : row.choice->shown) {
        if (arm.bits != 0) {
            numbers.push_back(arm.value);
        }
    }
    return numbers;
}

std::wstring FieldText(const ScanRow& row, const ScanGroupValues& values) {
    switch (row.kind) {
        case ScanRowKind::Bit:
            return (values.flags & row.bits) != 0 ? L"1" : L"0";
        case ScanRowKind::Int:
            return std::to_wstring(static_cast<int32_t>(values.*row.number));
        case ScanRowKind::Choice:
            return std::to_wstring(row.choice->ValueOf(values.flags));
        case ScanRowKind::Text:
        case ScanRowKind::CustomActionPair:
            return values.*row.text;
        case ScanRowKind::Uid:
        case ScanRowKind::Empty:
            break;
    }
    return {};
}

bool SetField(const ScanRow& row, std::wstring_view text, ScanGroupValues& values) {
    if (row.kind == ScanRowKind::Text || row.kind == ScanRowKind::CustomActionPair) {
        const bool good = IsFormText(text);
        if (good) {
            values.*row.text = text;
        }
        return good;
    }
    const uint32_t number = NumberOf(text);
    if (row.kind == ScanRowKind::Int) {
        const bool good = number <= kHighestFormNumber;
        values.*row.number = good ? number : values.*row.number;
        return good;
    }
    uint32_t flags = values.flags;
    bool good = number <= 1;
    if (row.kind == ScanRowKind::Choice) {
        good = SetChoice(*row.choice, number, flags);
    } else {
        flags = number == 1 ? flags | row.bits : flags & ~row.bits;
    }
    values.flags = good ? flags : values.flags;
    return good;
}

StoreResult StoreDefaults(CINICache& scanIni, const ScanGroup& group, const FieldSource& given) {
    StoreResult result;
    ScanGroupValues values;
    ReadScanGroupIni(scanIni, group, values);
    for (const ScanRow& row : group.rows) {
        const wchar_t* const text = row.IsSetting() ? given(row.key.data()) : nullptr;
        const std::wstring before = FieldText(row, values);
        if (text != nullptr && before != text) {  // the current value is always accepted
            (SetField(row, text, values) ? result.changed : result.refused).emplace_back(row.key);
        }
    }
    if (result.refused.empty() && !result.changed.empty()) {
        result.failed = !WriteScanGroupIni(scanIni, group, values).complete;
    }
    return result;
}

}  // namespace wrb
