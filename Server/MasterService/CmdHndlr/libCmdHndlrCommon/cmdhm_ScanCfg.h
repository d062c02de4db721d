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

// The same as they are stored, for a program that changes them: the custom action is not completed, no changed bit is
// cleared, and no log line shows the values.
bool GetStoredScanGroup(const ScanGroup& group, ScanGroupValues& values, const wchar_t* uid);

// The group's section, alone in `out`, which is empty after a failure.
bool GetAndExportScanGroup(const ScanGroup& group, std::wstring& out, const wchar_t* uid, bool bResetCfgFlag);

}  // namespace wrb

// The same by name, a function a group: the family that other command handlers build on.
bool cmdhm_GetMSCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetRTCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetPSCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetSNCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetMSCfgEx(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetRTCfgEx(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetPSCfgEx(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetSNCfgEx(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetSpyMSCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetSpyRTCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetSpyPSCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);
bool cmdhm_GetSpySNCfg(wrb::ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag);

namespace wrb {

// Appends all twelve sections of an agent, nothing for an agent without a configuration. False, with nothing appended,
// when a request failed or the agent is not known.
bool GetAllScanSections(std::wstring& out, const wchar_t* uid);

}  // namespace wrb

// All twelve sections of an agent, alone in `out`, which is empty after a failure. There is no server-wide form:
// without a uid the database knows no such agent.
bool cmdhm_GetAllScanCfg(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag);

// The agent's spyware restore sessions as one section, alone in `out`, which is empty after a failure.
bool cmdhm_GetSpyRestoreList(std::wstring& out, const wchar_t* uid);
