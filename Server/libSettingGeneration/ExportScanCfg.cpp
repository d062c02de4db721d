#include "ExportScanCfg.h"

#include "DebugLog.h"
#include "RenderScanGroup.h"

using wrb::ExportScanGroup;
using wrb::FindScanGroup;
using wrb::ScanGroupKind;
using wrb::ScanType;

namespace wrb {

void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    RenderScanGroup(out, group, uid, values);
    // Of the twelve only this one leaves a trace.
    if (group.type == ScanType::MS && group.kind == ScanGroupKind::Spyware) {
        WRB_LOG(kLogDebug8, L"[cmdhm_ExportSpyMSCfg][%s]", out.c_str());
    }
}

}  // namespace wrb

void cmdhm_ExportMSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::MS, ScanGroupKind::Main), uid, values);
}

void cmdhm_ExportMSCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::MS, ScanGroupKind::Exclusion), uid, values);
}

void cmdhm_ExportSpyMSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::MS, ScanGroupKind::Spyware), uid, values);
}

void cmdhm_ExportRTCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::RT, ScanGroupKind::Main), uid, values);
}

void cmdhm_ExportRTCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::RT, ScanGroupKind::Exclusion), uid, values);
}

void cmdhm_ExportSpyRTCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::RT, ScanGroupKind::Spyware), uid, values);
}

void cmdhm_ExportPSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::PS, ScanGroupKind::Main), uid, values);
}

void cmdhm_ExportPSCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::PS, ScanGroupKind::Exclusion), uid, values);
}

void cmdhm_ExportSpyPSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::PS, ScanGroupKind::Spyware), uid, values);
}

void cmdhm_ExportSNCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::SN, ScanGroupKind::Main), uid, values);
}

void cmdhm_ExportSNCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::SN, ScanGroupKind::Exclusion), uid, values);
}

void cmdhm_ExportSpySNCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(ScanType::SN, ScanGroupKind::Spyware), uid, values);
}
