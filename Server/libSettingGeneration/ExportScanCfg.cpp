#include "ExportScanCfg.h"

#include "DebugLog.h"
#include "IniText.h"

namespace wrb {
namespace {

constexpr std::wstring_view kExploitMarker = L"CVE_Exploit";
constexpr std::size_t kExploitItemLength = kExploitMarker.size() + 4;
constexpr std::wstring_view kExploitKey = L"CustActionCve";

// A real-time custom action loses its first exploit item (the marker and the four characters after it) and one
// separator. The item follows under a key of its own.
void WriteCustomAction(IniWriter& writer, std::wstring_view key, std::wstring_view text) {
    const std::size_t marker = text.find(kExploitMarker);
    if (marker == text.npos) {
        writer.String(key, text);
        return;
    }
    const std::wstring_view rest = text.substr(marker);
    const bool more = rest.size() > kExploitItemLength;
    writer.Line(key, text.substr(0, marker), more ? rest.substr(kExploitItemLength + 1) : std::wstring_view());
    writer.String(kExploitKey, rest.substr(0, kExploitItemLength));
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

void RenderScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    IniWriter writer(out);
    writer.Section(group.section);
    for (const ScanRow& row : group.rows) {
        WriteRow(writer, row, uid, values);
    }
    writer.Finish();
}

void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    RenderScanGroup(out, group, uid, values);
    if (group.type == ScanType::MS && group.kind == ScanGroupKind::Spyware) {
        WRB_LOG(kLogDebug8, L"[cmdhm_ExportSpyMSCfg][%s]", out.c_str());
    }
}

}  // namespace wrb
