// The setting bundles of one agent, a section each.
//
// A uid is cut to 36 characters; there is no server-wide form: without a uid the database knows no such agent. The
// section is appended to `out`; after a failure `out` is as it was. With bResetCfgFlag the bundle's
// configuration-changed bit is cleared once the section has been made. False: the request failed, the agent is not
// known, or the addresses of the web-threat lists cannot be protected; the log says which. Throws only for lack of
// memory. Any thread; a call waits for the database as long as that takes, at most 600 seconds.
#pragma once

#include <string>

// Web threat protection. Its lists need the key that the server INI has for them (docs/settings.md).
bool cmdhm_GetWtpSetting(std::wstring& out, const wchar_t* pszUid, bool bResetCfgFlag);

// The files to be put back after their analysis.
bool cmdhm_GetFARestoreSetting(std::wstring& out, const wchar_t* pszUid, bool bResetCfgFlag);

bool cmdhm_GetNCIESetting(std::wstring& out, const wchar_t* pszUid);              // network content inspection
bool cmdhm_GetSampleSubmissionSetting(std::wstring& out, const wchar_t* pszUid);  // from the privilege words
bool cmdhm_GetSablexSetting(std::wstring& out, const wchar_t* pszUid);
bool cmdhm_GetAggrScanSetting(std::wstring& out, const wchar_t* pszUid);

// The policies of the central-management agent.
bool cmdhm_GetQMAgentPolicyInfo(std::wstring& out, const wchar_t* pszUid);
