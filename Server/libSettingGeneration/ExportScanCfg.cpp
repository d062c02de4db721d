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
void AppendCustomAction(std::wstring& out, std::wstring_view key, std::wstring_view text) {
    const std::size_t marker = text.find(kExploitMarker);
    if (marker == text.npos) {
        AppendIniString(out, key, text);
        return;
    }
    const std::wstring_view rest = text.substr(marker);
    std::wstring others(text.substr(0, marker));
    if (rest.size() > kExploitItemLength) {
        others.append(rest.substr(kExploitItemLength + 1));
    }
    AppendIniString(out, key, others);
    AppendIniString(out, kExploitKey, rest.substr(0, kExploitItemLength));
}

void AppendRow(std::wstring& out, const ScanRow& row, std::wstring_view uid, const ScanGroupValues& values) {
    switch (row.kind) {
        case ScanRowKind::Uid:
            return AppendIniString(out, row.key, uid);
        case ScanRowKind::Bit:
            return AppendIniBool(out, row.key, (values.flags & row.bits) != 0);
        case ScanRowKind::Int:
            return AppendIniInt(out, row.key, static_cast<int32_t>(values.*row.number));
        case ScanRowKind::Text:
            return AppendIniString(out, row.key, values.*row.text);
        case ScanRowKind::Choice:
            return AppendIniInt(out, row.key, static_cast<int32_t>(row.choice->ValueOf(values.flags)));
        case ScanRowKind::CustomActionPair:
            return AppendCustomAction(out, row.key, values.*row.text);
        case ScanRowKind::Empty:
            return AppendIniString(out, row.key, {});
    }
}

}  // namespace

void RenderScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    AppendIniSection(out, group.section);
    for (const ScanRow& row : group.rows) {
        AppendRow(out, row, uid, values);
    }
}

void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    RenderScanGroup(out, group, uid, values);
    if (group.type == ScanType::MS && group.kind == ScanGroupKind::Spyware) {
        WRB_LOG(kLogDebug8, L"[cmdhm_ExportSpyMSCfg][%s]", out.c_str());
    }
}

// What the functions by name are instances of.
template <ScanType type, ScanGroupKind kind>
void ExportCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(type, kind), uid, values);
}

}  // namespace wrb

using enum wrb::ScanType;
using enum wrb::ScanGroupKind;
using wrb::ExportCfg;
using wrb::ScanGroupValues;

// clang-format off
void cmdhm_ExportMSCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<MS, Main>(out, uid, values); }
void cmdhm_ExportRTCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<RT, Main>(out, uid, values); }
void cmdhm_ExportPSCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<PS, Main>(out, uid, values); }
void cmdhm_ExportSNCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<SN, Main>(out, uid, values); }
void cmdhm_ExportMSCfgEx(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<MS, Exclusion>(out, uid, values); }
void cmdhm_ExportRTCfgEx(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<RT, Exclusion>(out, uid, values); }
void cmdhm_ExportPSCfgEx(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<PS, Exclusion>(out, uid, values); }
void cmdhm_ExportSNCfgEx(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<SN, Exclusion>(out, uid, values); }
void cmdhm_ExportSpyMSCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<MS, Spyware>(out, uid, values); }
void cmdhm_ExportSpyRTCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<RT, Spyware>(out, uid, values); }
void cmdhm_ExportSpyPSCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<PS, Spyware>(out, uid, values); }
void cmdhm_ExportSpySNCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) { ExportCfg<SN, Spyware>(out, uid, values); }
// clang-format on
