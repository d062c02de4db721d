// Retrieval of scan settings: of one agent from the database, or of the server as a whole from the scan INI.
//
// A uid is cut to 36 characters; an empty or null one asks for the server-wide settings. With bResetCfgFlag an agent's
// configuration-changed bit of the group is cleared once its settings have been read; server-wide settings have none.
// False: a request failed, the agent is not known, or it has no settings; the log says which. Throws only for lack of
// memory. Any thread; a call waits for the database as long as that takes, at most 600 seconds a request.
#pragma once

#include <string>

#include "ScanGroup.h"

namespace wrb {

// The values of one group, set anew. Do not use them after a failure.
bool GetScanGroup(const ScanGroup& group, ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);

// The group's section, alone in `out`, which is empty after a failure.
bool GetAndExportScanGroup(const ScanGroup& group, std::wstring& out, const wchar_t* uid, bool bResetCfgFlag);

// The same for a group that is known when the program is compiled.
template <ScanType type, ScanGroupKind kind>
bool GetCfg(ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag) {
    return GetScanGroup(FindScanGroup(type, kind), values, uid, bResetCfgFlag);
}

}  // namespace wrb

// The family of functions that other command handlers build on: each an instance of the template above.
inline constexpr auto cmdhm_GetMSCfg = wrb::GetCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_GetRTCfg = wrb::GetCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_GetPSCfg = wrb::GetCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_GetSNCfg = wrb::GetCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_GetMSCfgEx = wrb::GetCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_GetRTCfgEx = wrb::GetCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_GetPSCfgEx = wrb::GetCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_GetSNCfgEx = wrb::GetCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_GetSpyMSCfg = wrb::GetCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_GetSpyRTCfg = wrb::GetCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_GetSpyPSCfg = wrb::GetCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_GetSpySNCfg = wrb::GetCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;

// All twelve sections of an agent, alone in `out`, which is empty after a failure. There is no server-wide form:
// without a uid the database knows no such agent.
bool cmdhm_GetAllScanCfg(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag);

// The agent's spyware restore sessions as one section, alone in `out`, which is empty after a failure.
bool cmdhm_GetSpyRestoreList(std::wstring& out, const wchar_t* uid);
