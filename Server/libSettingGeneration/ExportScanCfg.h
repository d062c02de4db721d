// The export functions: each appends one group's section to `out`, from a uid and the group's values.
//
// They render the caller's values where they are and make no container of their own: the text is the same, and the
// reply with all twelve sections is made without copying a single setting.
#pragma once

#include <string>
#include <string_view>

#include "ScanGroup.h"

void cmdhm_ExportMSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportMSCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpyMSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportRTCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportRTCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpyRTCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportPSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportPSCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpyPSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSNCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSNCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpySNCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);

namespace wrb {

// The export function of a group, for callers that walk the groups.
void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values);

}  // namespace wrb
