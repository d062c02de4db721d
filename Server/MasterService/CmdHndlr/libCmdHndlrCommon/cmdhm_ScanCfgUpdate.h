// Update of scan settings: of one agent or of all in the database, and of the server as a whole in the scan INI.
// docs/commands.md describes the fields and the levels.
//
// `message` stands at the first setting; missing fields are empty. Levels are written in this order: the scan INI with
// `ini`; then the agent `uid`, cut to 36 characters, or else, when it is null or empty, every agent with `allAgents`.
// `flag` goes to the database as it is; of an exclusion group it goes into the log line only.
//
// The result is that of the last level written; false when there was none. A level that fails stays partly written. A
// write to the database counts as done once its bytes are on the pipe. Throws only for lack of memory. Any thread.
#pragma once

#include <cstdint>

#include "ScanGroup.h"

class CCmdProtocol;

namespace wrb {

bool SetScanGroup(const ScanGroup& group, CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini,
                  uint32_t flag);

// The same for a group that is known when the program is compiled.
template <ScanType type, ScanGroupKind kind>
bool SetCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag) {
    return SetScanGroup(FindScanGroup(type, kind), message, uid, allAgents, ini, flag);
}

}  // namespace wrb

// The family of functions that other command handlers build on: each an instance of the template above.
inline constexpr auto cmdhm_SetMSCfg = wrb::SetCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_SetRTCfg = wrb::SetCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_SetPSCfg = wrb::SetCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_SetSNCfg = wrb::SetCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
inline constexpr auto cmdhm_SetMSCfgEx = wrb::SetCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_SetRTCfgEx = wrb::SetCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_SetPSCfgEx = wrb::SetCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_SetSNCfgEx = wrb::SetCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Exclusion>;
inline constexpr auto cmdhm_SetSpyMSCfg = wrb::SetCfg<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_SetSpyRTCfg = wrb::SetCfg<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_SetSpyPSCfg = wrb::SetCfg<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
inline constexpr auto cmdhm_SetSpySNCfg = wrb::SetCfg<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;
