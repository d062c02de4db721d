#include "cmdhm_ScanCfg.h"

#include <utility>

#include "AllScanValues.h"
#include "CmdProtocol.h"
#include "CustomAction.h"
#include "DbAgent.h"
#include "DbAllScan.h"
#include "DbScanCfg.h"
#include "DebugLog.h"
#include "ExportScanCfg.h"
#include "INICache.h"
#include "ScanCfgIni.h"
#include "UidField.h"

namespace wrb {
namespace {

constexpr const wchar_t* kServerWide = L"ini";  // stands in log lines where an agent's has its uid

void LogMain(const ScanGroup& group, const wchar_t* who, const ScanGroupValues& v) {
    if (group.type == ScanType::PS) {
        WRB_LOG(kLogDebug8, L"get ps:[%s][%08x][%d][%d][%d][%d][%d][%d][%d][%d][%d][%d][%d][%s][%s][%s][%s]", who,
                v.flags, v.compressedLayer, v.oleLayer, v.possibleVirusCustActInActiveAct, v.frequency, v.hour,
                v.minute, v.amPm, v.dayOfMonth, v.dayOfWeek, v.weekOrdinalOfMonth, v.weekdayOfMonth, v.extList.c_str(),
                v.moveDir.c_str(), v.cleanFailedMoveDir.c_str(), v.custAction.c_str());
        return;
    }
    WRB_LOG(kLogDebug8, L"get %s:[%s][%08x][%d][%d][%d][%s][%s][%s][%s]", group.logTag.data(), who, v.flags,
            v.compressedLayer, v.oleLayer, v.possibleVirusCustActInActiveAct, v.extList.c_str(), v.moveDir.c_str(),
            v.cleanFailedMoveDir.c_str(), v.custAction.c_str());
}

void LogExclusion(const ScanGroup& group, const wchar_t* who, const ScanGroupValues& v) {
    WRB_LOG(kLogDebug8, L"get %s:[%s][%08x][%s][%s][%s]", group.logTag.data(), who, v.flags, v.excludedFolder.c_str(),
            v.excludedFile.c_str(), v.excludedExt.c_str());
}

void LogSpyware(const ScanGroup& group, const UidField& uid, const ScanGroupValues& v) {
    const wchar_t* const name = group.name.data();
    if (uid.IsEmpty()) {
        WRB_LOG(kLogDebug8, L"[cmdhm_Get%sIni][%08x]", name, v.flags);
    } else {
        WRB_LOG(kLogDebug8, L"[cmdhm_Get%s][%s][%08x]", name, uid.CStr(), v.flags);
    }
    if (group.type != ScanType::RT) {
        WRB_LOG(kLogDebug8, L"[cmdhm_Get%s][Exclusion - file extension list:%s]", name, v.excludeFileExtList.c_str());
    }
}

void LogValues(const ScanGroup& group, const UidField& uid, const ScanGroupValues& values) {
    const wchar_t* const who = uid.IsEmpty() ? kServerWide : uid.CStr();
    switch (group.kind) {
        case ScanGroupKind::Main:
            return LogMain(group, who, values);
        case ScanGroupKind::Exclusion:
            return LogExclusion(group, who, values);
        case ScanGroupKind::Spyware:
            return LogSpyware(group, uid, values);
    }
}

// The texts of a main or an exclusion group, from the answer's fields.
void TakeTexts(const ScanGroup& group, const std::wstring& answer, ScanGroupValues& values) {
    CCmdProtocol fields(answer.data(), static_cast<int64_t>(answer.size() * sizeof(wchar_t)));
    if (group.kind == ScanGroupKind::Exclusion) {
        fields >> values.excludedFolder >> values.excludedFile >> values.excludedExt;
        return;
    }
    std::wstring unused;
    fields >> values.extList >> values.moveDir >> unused >> unused >> values.custAction;
    values.cleanFailedMoveDir = values.moveDir;
    CompleteCustomAction(ScanIniCache(), values.custAction);
}

bool GetFromDatabase(const ScanGroup& group, ScanGroupValues& values, const UidField& uid, bool bResetCfgFlag) {
    const bool hasTexts = group.kind != ScanGroupKind::Spyware;
    std::wstring texts;
    if (!GetDbScanGroup(group, uid.CStr(), values) || (hasTexts && !dbGetExtraW(uid.CStr(), group.configFlag, texts))) {
        return false;
    }
    if (bResetCfgFlag) {
        dbSetConfFlagW(uid.CStr(), 0, group.configFlag);
    }
    if (hasTexts) {
        TakeTexts(group, texts, values);
    }
    LogValues(group, uid, values);
    return !hasTexts || !texts.empty();
}

}  // namespace

bool GetScanGroup(const ScanGroup& group, ScanGroupValues& values, const wchar_t* uid, bool bResetCfgFlag) {
    values = {};
    const UidField field(uid);
    if (!field.IsEmpty()) {
        return GetFromDatabase(group, values, field, bResetCfgFlag);
    }
    ReadScanGroupIni(ScanIniCache(), group, values);
    LogValues(group, field, values);
    return true;
}

bool GetAndExportScanGroup(const ScanGroup& group, std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    out.clear();
    ScanGroupValues values;
    if (!GetScanGroup(group, values, uid, bResetCfgFlag)) {
        return false;
    }
    ExportScanGroup(out, group, UidField(uid).View(), values);
    return true;
}

}  // namespace wrb

bool cmdhm_GetAllScanCfg(std::wstring& out, const wchar_t* uid, bool bResetCfgFlag) {
    out.clear();
    const wrb::UidField field(uid);
    wrb::AllScanConfig config;
    wrb::AllScanLists lists;
    if (!dbGetClnAllScanCfgW(field.CStr(), config, L"cmdhm_GetAllScanCfg") ||
        (config.hasExtra && !dbGetClnAllScanExW(field.CStr(), lists, L"cmdhm_GetAllScanCfg")) || !config.hasConfig) {
        return false;
    }
    wrb::ExportAllScanGroups(out, field.View(), wrb::TakeAllScanValues(std::move(config), std::move(lists)));
    if (bResetCfgFlag) {
        dbSetConfFlagW(field.CStr(), 0, wrb::kAllScanConfigFlags);
    }
    return true;
}
