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
    CompleteCustomAction(ScanIniCache(), values.custAction);
}

bool GetFromDatabase(const ScanGroup& group, ScanGroupValues& values, const std::wstring& uid, bool bResetCfgFlag) {
    const bool hasTexts = group.kind != ScanGroupKind::Spyware;
    std::wstring texts;
    if (!GetDbScanGroup(group, uid.c_str(), values) ||
        (hasTexts && !dbGetExtraW(uid.c_str(), group.configFlag, texts))) {
        return false;
    }
    if (bResetCfgFlag) {
        dbSetConfFlagW(uid.c_str(), 0, group.configFlag);
    }
    if (hasTexts) {
        TakeTexts(group, texts, values);
    }
    LogScanValues(group, uid, values);
    return !hasTexts || !texts.empty();
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
        return GetFromDatabase(group, values, field, bResetCfgFlag);
    }
    ReadScanGroupIni(ScanIniCache(), group, values);
    LogScanValues(group, field, values);
    return true;
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

}  // namespace wrb

bool cmdhm_GetAllScanCfg(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    out.clear();
    const std::wstring field = wrb::CutUid(uid);
    wrb::AllScanConfig config;
    wrb::AllScanLists lists;
    if (!dbGetClnAllScanCfgW(field.c_str(), config, L"cmdhm_GetAllScanCfg") ||
        (config.hasExtra && !dbGetClnAllScanExW(field.c_str(), lists, L"cmdhm_GetAllScanCfg")) || !config.hasConfig) {
        return false;
    }
    wrb::ExportAllScanGroups(out, field, wrb::TakeAllScanValues(std::move(config), std::move(lists)));
    if (bResetCfgFlag) {
        dbSetConfFlagW(field.c_str(), 0, wrb::kAllScanConfigFlags);
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
