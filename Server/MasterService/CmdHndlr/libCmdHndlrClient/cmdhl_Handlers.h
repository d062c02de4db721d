// The handlers behind the command table. Each gets the message with the command's name already read, runs on the
// caller's thread, and reports by the answer it writes and by the debug log. Any number run at once.
#pragma once

class CCmdProtocol;

// cmdhl_Examples.cpp
void cmdhl_Sleep(CCmdProtocol& message);
void cmdhl_Echo(CCmdProtocol& message);
void cmdhl_ClearIniCache(CCmdProtocol& message);

// cmdhl_RqCfg.cpp: one section each of an agent's scan settings, or of the server-wide ones when the uid is empty.
void cmdhl_GetAllScanCfg(CCmdProtocol& message);
void cmdhl_GetMSCfg(CCmdProtocol& message);
void cmdhl_GetMSCfgEx(CCmdProtocol& message);
void cmdhl_GetSpyMSCfg(CCmdProtocol& message);
void cmdhl_GetRTCfg(CCmdProtocol& message);
void cmdhl_GetRTCfgEx(CCmdProtocol& message);
void cmdhl_GetSpyRTCfg(CCmdProtocol& message);
void cmdhl_GetPSCfg(CCmdProtocol& message);
void cmdhl_GetPSCfgEx(CCmdProtocol& message);
void cmdhl_GetSpyPSCfg(CCmdProtocol& message);
void cmdhl_GetSNCfg(CCmdProtocol& message);
void cmdhl_GetSNCfgEx(CCmdProtocol& message);
void cmdhl_GetSpySNCfg(CCmdProtocol& message);
void cmdhl_GetSpyRestoreList(CCmdProtocol& message);

// cmdhl_Others.cpp: firewall logs of agents.
void cmdhl_GetPFWLogQueryCondition(CCmdProtocol& message);
void cmdhl_SetCFWLog(CCmdProtocol& message);
void cmdhl_UpdateCfwCount(CCmdProtocol& message);

// cmdhl_OnCfg.cpp: an agent's settings are stored; no answer.
void cmdhl_SetMSCfg(CCmdProtocol& message);
void cmdhl_SetMSCfgEx(CCmdProtocol& message);
void cmdhl_SetRTCfg(CCmdProtocol& message);
void cmdhl_SetRTCfgEx(CCmdProtocol& message);
void cmdhl_SetPSCfg(CCmdProtocol& message);
void cmdhl_SetPSCfgEx(CCmdProtocol& message);
void cmdhl_SetSNCfg(CCmdProtocol& message);
void cmdhl_SetSNCfgEx(CCmdProtocol& message);
void cmdhl_SetSpyMSCfg(CCmdProtocol& message);
void cmdhl_SetSpyRTCfg(CCmdProtocol& message);
void cmdhl_SetSpyPSCfg(CCmdProtocol& message);
void cmdhl_SetSpySNCfg(CCmdProtocol& message);
void cmdhl_SetAllCfgEx(CCmdProtocol& message);
void cmdhl_SetMailScanRTCfg(CCmdProtocol& message);
void cmdhl_SetClientCfgSUStatus(CCmdProtocol& message);
void cmdhl_SetClientCfgWarningSetting(CCmdProtocol& message);

// cmdhl_RqBundle.cpp: one setting bundle each of an agent.
void cmdhl_GetWtpSetting(CCmdProtocol& message);
void cmdhl_GetFARestoreSetting(CCmdProtocol& message);
void cmdhl_GetNCIESetting(CCmdProtocol& message);
void cmdhl_GetSampleSubmissionSetting(CCmdProtocol& message);
void cmdhl_GetSablexSetting(CCmdProtocol& message);

// cmdhl_RqAlertMsg.cpp: the texts that an agent shows to its user.
void cmdhl_GetClnAlertMsg(CCmdProtocol& message);

// cmdhl_SpywareLog.cpp and cmdhl_WtcLog.cpp: what agents report about spyware. The two uploads throw std::out_of_range
// for a reply pipe's name that is shorter than their agents' names are.
void cmdhl_SetSpywareLog(CCmdProtocol& message);
void cmdhl_SetSpywareBackupManifest(CCmdProtocol& message);
void cmdhl_SetSpywareRestoreLog(CCmdProtocol& message);
void cmdhl_SetStatusFlag(CCmdProtocol& message);
void cmdhl_AddWtcLog(CCmdProtocol& message);
