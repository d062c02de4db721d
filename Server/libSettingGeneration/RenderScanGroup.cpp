#include "RenderScanGroup.h"

#include "IniText.h"

namespace wrb {
namespace {

constexpr std::wstring_view kExploitMarker = L"CVE_Exploit";
constexpr std::size_t kExploitItemLength = kExploitMarker.size() + 4;
constexpr std::wstring_view kExploitKey = L"CustActionCve";

void WriteCustomAction(IniWriter& writer, std::wstring_view key, std::wstring_view text) {
    const SplitCustomAction parts = SplitAtExploit(text);
    writer.Line(key, parts.head, parts.tail);
    if (parts.HasExploit()) {
        writer.String(kExploitKey, parts.exploit);
    }
}

void WriteRow(IniWriter& writer, const ScanRow& row, std::wstring_view uid, const ScanGroupValues& values) {
    switch (row.kind) {
        case ScanRowKind::Uid:
            return writer.String(row.key, uid);
        case ScanRowKind::Bit:
            return writer.Bool(row.key, (values.flags & row.bits) != 0);
        case ScanRowKind::Int:
            return writer.Int(row.key, static_cast<int32_t>(values.*row.number));
        case ScanRowKind::Text:
            return writer.String(row.key, values.*row.text);
        case ScanRowKind::Choice:
            return writer.Int(row.key, static_cast<int32_t>(row.choice->ValueOf(values.flags)));
        case ScanRowKind::CustomActionPair:
            return WriteCustomAction(writer, row.key, values.*row.text);
        case ScanRowKind::Empty:
            return writer.String(row.key, {});
    }
}

}  // namespace

SplitCustomAction SplitAtExploit(std::wstring_view text) noexcept {
    const std::size_t marker = text.find(kExploitMarker);
    if (marker == std::wstring_view::npos) {
        return {.head = text, .tail = {}, .exploit = {}};
    }
    const std::wstring_view rest = text.substr(marker);
    const bool more = rest.size() > kExploitItemLength;
    return {.head = text.substr(0, marker),
            .tail = more ? rest.substr(kExploitItemLength + 1) : std::wstring_view(),
            .exploit = rest.substr(0, kExploitItemLength)};
}

void RenderScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    IniWriter writer(out);
    writer.Section(group.section);
    for (const ScanRow& row : group.rows) {
        WriteRow(writer, row, uid, values);
    }
    writer.Finish();
}

}  // namespace wrb
