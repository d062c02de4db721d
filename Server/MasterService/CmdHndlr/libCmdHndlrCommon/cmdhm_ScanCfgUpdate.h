// Update of scan settings: of one agent or of all in the database, and of the server as a whole in the scan INI.
//
// `message` stands at the first setting: the fields of the group's updateRows (ScanGroup.h; docs/commands.md writes
// them out), of which missing ones are empty. A switch is on only by exactly "1"; a number is read as far as its digits
// go, and a text as far as its first NUL.
//
// Levels, in the order in which they are written: the scan INI with `ini`; then the agent `uid`, cut to 36 characters,
// or else, when that is null or empty, every agent with `allAgents`. An agent's record gets the bits of the group's
// mask only, and with it the group's configuration-changed bit, so that the agent fetches the group again. The INI has
// no such bit and takes every bit. `flag` goes to the database as it is, which gives it no meaning; of an exclusion
// group it goes no further than the log line.
//
// The INI level of the real-time group tells the central-management agent the group's new switch, once it is in the
// file. ScanCfgIni.h says which texts the file refuses or does not keep whole.
//
// The result is that of the last level written; false when there was none to write. Of a level that fails, what was
// written stays. A write to the database counts as done once its bytes are on the pipe. Throws only for lack of
// memory. Any thread.
#pragma once

#include <cstdint>

#include "ScanGroup.h"

class CCmdProtocol;

bool cmdhm_SetMSCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetRTCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetPSCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetSNCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetMSCfgEx(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetRTCfgEx(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetPSCfgEx(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetSNCfgEx(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetSpyMSCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetSpyRTCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetSpyPSCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);
bool cmdhm_SetSpySNCfg(CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini, uint32_t flag);

namespace wrb {

// The same for callers that walk the groups.
bool SetScanGroup(const ScanGroup& group, CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini,
                  uint32_t flag);

}  // namespace wrb
