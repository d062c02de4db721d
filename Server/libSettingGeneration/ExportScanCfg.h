// One scan group as the INI section that an agent receives, appended to `out`.
#pragma once

#include <string>
#include <string_view>

#include "ScanGroup.h"

namespace wrb {

void RenderScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values);

// The same, and of the manual spyware group a log line.
void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values);

}  // namespace wrb

// The same by name, a function a group: the family that other command handlers build on.
void cmdhm_ExportMSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportRTCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportPSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSNCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportMSCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportRTCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportPSCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSNCfgEx(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpyMSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpyRTCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpyPSCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
void cmdhm_ExportSpySNCfg(std::wstring& out, std::wstring_view uid, const wrb::ScanGroupValues& values);
