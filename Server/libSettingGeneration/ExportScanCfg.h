// One scan group as the INI section that an agent receives, appended to `out`.
#pragma once

#include <string>
#include <string_view>

#include "ScanGroup.h"

namespace wrb {

void RenderScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values);

// The same, and of the manual spyware group a log line.
void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values);

// The same for a group that is known when the program is compiled.
template <ScanType type, ScanGroupKind kind>
void ExportCfg(std::wstring& out, std::wstring_view uid, const ScanGroupValues& values) {
    ExportScanGroup(out, FindScanGroup(type, kind), uid, values);
}

}  // namespace wrb

// The family of functions that other command handlers build on: each an instance of the template above.
inline constexpr auto cmdhm_ExportMSCfg = wrb::ExportCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_ExportRTCfg = wrb::ExportCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_ExportPSCfg = wrb::ExportCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_ExportSNCfg = wrb::ExportCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_ExportMSCfgEx = wrb::ExportCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_ExportRTCfgEx = wrb::ExportCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_ExportPSCfgEx = wrb::ExportCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_ExportSNCfgEx = wrb::ExportCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_ExportSpyMSCfg = wrb::ExportCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_ExportSpyRTCfg = wrb::ExportCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_ExportSpyPSCfg = wrb::ExportCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_ExportSpySNCfg = wrb::ExportCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;
