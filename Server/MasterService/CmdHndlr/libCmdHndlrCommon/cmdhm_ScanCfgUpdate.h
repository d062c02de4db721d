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

#include "DbScanUpdate.h"
#include "ScanGroup.h"

class CCmdProtocol;

namespace wrb {

bool SetScanGroup(const ScanGroup& group, CCmdProtocol& message, const wchar_t* uid, bool allAgents, bool ini,
                  uint32_t flag);

// One level each, for programs that have the values. `update` says which bits of the stored option word change; numbers
// and texts are written as `values` has them. The configuration-changed bit is set, and the log line written, as by
// SetScanGroup.
bool SetScanGroupInDb(const ScanGroup& group, DbTarget target, const ScanWrite& update, const ScanGroupValues& values);

// The scan INI: every key, or with `unchanged` those whose values differ from it.
bool SetScanGroupIni(const ScanGroup& group, const ScanWrite& update, const ScanGroupValues& values,
                     const ScanGroupValues* unchanged = nullptr);

}  // namespace wrb

// The same by name, a function a group: the family that other command handlers build on.
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
