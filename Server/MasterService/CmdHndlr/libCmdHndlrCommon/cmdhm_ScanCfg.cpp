#include "cmdhm_ScanCfg.h"

#include <utility>

#include "AgentUid.h"
#include "AllScanValues.h"
#include "CmdProtocol.h"
#include "CustomAction.h"
#include "DbAgent.h"
#include "DbScanCfg.h"
#include "DebugLog.h"
#include "ExportScanCfg.h"
#include "INICache.h"
#include "ScanCfgIni.h"
#include "ScanLog.h"

namespace wrb {
namespace {

CCmdProtocol FieldsOf(const std::wstring& answer) {
    return CCmdProtocol(answer.data(), static_cast<int64_t>(answer.size() * sizeof(wchar_t)));
}

// The texts of a main or an exclusion group, from the answer's fields.
void TakeTexts(const ScanGroup& group, const std::wstring& answer, ScanGroupValues& values) {
    CCmdProtocol fields = FieldsOf(answer);
    if (group.kind == ScanGroupKind::Exclusion) {
        fields >> values.excludedFolder >> values.excludedFile >> values.excludedExt;
        return;
    }
    std::wstring unused;
    fields >> values.extList >> values.moveDir >> unused >> unused >> values.custAction;
    values.cleanFailedMoveDir = values.moveDir;
}

// `hasTexts` is false when the group should have texts and the database has none.
bool GetFromDatabase(const ScanGroup& group, ScanGroupValues& values, const std::wstring& uid, bool& hasTexts) {
    const bool wantsTexts = group.kind != ScanGroupKind::Spyware;
    std::wstring texts;
    if (!GetDbScanGroup(group, uid.c_str(), values) ||
        (wantsTexts && !dbGetExtraW(uid.c_str(), group.configFlag, texts))) {
        return false;
    }
    if (wantsTexts) {
        TakeTexts(group, texts, values);
    }
    hasTexts = !wantsTexts || !texts.empty();
    return true;
}

bool GetAgentGroup(const ScanGroup& group, ScanGroupValues& values, const std::wstring& uid, bool bResetCfgFlag) {
    bool hasTexts = false;
    if (!GetFromDatabase(group, values, uid, hasTexts)) {
        return false;
    }
    if (bResetCfgFlag) {
        dbSetConfFlagW(uid.c_str(), 0, group.configFlag);
    }
    if (group.kind == ScanGroupKind::Main) {
        CompleteCustomAction(ScanIniCache(), values.custAction);
    }
    LogScanValues(group, uid, values);
    return hasTexts;
}

// Unlike in the sections of the scan groups, blanks stand around the equals sign, and the count follows the items.
void AppendSessions(std::wstring& out, CCmdProtocol& answer) {
    uint32_t count = 0;
    std::wstring session;
    for (answer >> session; !session.empty(); answer >> session) {
        out.append(L"RestoreSession_").append(std::to_wstring(count)).append(L" = ").append(session).append(L"\n");
        ++count;
    }
    out.append(L"RestoreSessionCount = ").append(std::to_wstring(count)).append(L"\n");
}

}  // namespace

bool GetScanGroup(const ScanGroup& group, ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag) {
    values = {};
    const std::wstring field = CutUid(uid);
    if (!field.empty()) {
        return GetAgentGroup(group, values, field, bResetCfgFlag);
    }
    ReadScanGroupIni(ScanIniCache(), group, values);
    LogScanValues(group, field, values);
    return true;
}

bool GetStoredScanGroup(const ScanGroup& group, ScanGroupValues& values, const wchar_t* uid) {
    values = {};
    const std::wstring field = CutUid(uid);
    if (field.empty()) {
        ReadScanGroupIni(ScanIniCache(), group, values);
        return true;
    }
    bool hasTexts = false;
    return GetFromDatabase(group, values, field, hasTexts) && hasTexts;
}

bool GetAndExportScanGroup(const ScanGroup& group, std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    out.clear();
    ScanGroupValues values;
    if (!GetScanGroup(group, values, uid, bResetCfgFlag)) {
        return false;
    }
    ExportScanGroup(out, group, CutUid(uid), values);
    return true;
}

// What the functions by name are instances of.
template <ScanType type, ScanGroupKind kind>
bool GetCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) {
    return GetScanGroup(FindScanGroup(type, kind), values, uid, reset);
}

}  // namespace wrb

using enum wrb::ScanType;
using enum wrb::ScanGroupKind;
using wrb::GetCfg;
using wrb::ScanGroupValues;

// clang-format off
bool cmdhm_GetMSCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<MS, Main>(values, uid, reset); }
bool cmdhm_GetRTCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<RT, Main>(values, uid, reset); }
bool cmdhm_GetPSCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<PS, Main>(values, uid, reset); }
bool cmdhm_GetSNCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<SN, Main>(values, uid, reset); }
bool cmdhm_GetMSCfgEx(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<MS, Exclusion>(values, uid, reset); }
bool cmdhm_GetRTCfgEx(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<RT, Exclusion>(values, uid, reset); }
bool cmdhm_GetPSCfgEx(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<PS, Exclusion>(values, uid, reset); }
bool cmdhm_GetSNCfgEx(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<SN, Exclusion>(values, uid, reset); }
bool cmdhm_GetSpyMSCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<MS, Spyware>(values, uid, reset); }
bool cmdhm_GetSpyRTCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<RT, Spyware>(values, uid, reset); }
bool cmdhm_GetSpyPSCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<PS, Spyware>(values, uid, reset); }
bool cmdhm_GetSpySNCfg(ScanGroupValues& values, const wchar_t* uid, bool reset) { return GetCfg<SN, Spyware>(values, uid, reset); }
// clang-format on

bool wrb::GetAllScanSections(std::wstring& out, const wchar_t* uid) {
    const std::wstring field = CutUid(uid);
    AllScanConfig config;
    AllScanLists lists;
    if (!dbGetClnAllScanCfgW(field.c_str(), config, L"cmdhm_GetAllScanCfg") ||
        (config.hasExtra && !dbGetClnAllScanExW(field.c_str(), lists, L"cmdhm_GetAllScanCfg"))) {
        return false;
    }
    if (config.hasConfig) {
        ExportAllScanGroups(out, field, TakeAllScanValues(std::move(config), std::move(lists)));
    }
    return true;
}

bool cmdhm_GetAllScanCfg(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    out.clear();
    if (!wrb::GetAllScanSections(out, uid) || out.empty()) {
        return false;
    }
    if (bResetCfgFlag) {
        dbSetConfFlagW(wrb::CutUid(uid).c_str(), 0, wrb::kAllScanConfigFlags);
    }
    return true;
}

bool cmdhm_GetSpyRestoreList(std::wstring& out, const wchar_t* uid) {
    out.clear();
    std::wstring sessions;
    if (!dbGetBackupLogAllSessionsW(wrb::CutUid(uid).c_str(), sessions, 0) || sessions.empty()) {
        return false;
    }
    out = L"[Spyware Restore Session]\n";
    CCmdProtocol answer = wrb::FieldsOf(sessions);
    wrb::AppendSessions(out, answer);
    WRB_LOG(kLogDebug8, L"[cmdhm_GetSpyRestoreList] [%s]", out.c_str());
    return true;
}
