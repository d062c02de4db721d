#include "ScanSettingUpdates.h"

#include <array>
#include <string>

#include "AgentUid.h"
#include "CmdProtocol.h"
#include "CommandFields.h"
#include "CommandHandler.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb {

bool SetAllExclusions(CCmdProtocol& message, const wchar_t* uid) {
    CCmdProtocol fields = message;
    std::wstring excludeOwnProducts;
    std::array<std::wstring, 3> lists;
    fields >> excludeOwnProducts >> lists[0] >> lists[1] >> lists[2];
    WRB_LOG_FROM(kLogDebug8, kOnCfg, __LINE__, L"[cmdhl_SetAllCfgEx] enter(%s)(%s)(%s)", lists[0].c_str(),
                 lists[1].c_str(), lists[2].c_str());
    bool stored = true;
    for (const ScanType type : {ScanType::MS, ScanType::PS, ScanType::RT, ScanType::SN}) {
        fields = message;
        stored = SetScanGroup(FindScanGroup(type, ScanGroupKind::Exclusion), fields, uid, false, false, 0) && stored;
    }
    return stored;
}

bool SetPrivileges(CCmdProtocol& message, const wchar_t* uid, std::span<const DbPrivilegeBit> bits) {
    const std::wstring field = CutUid(uid);
    if (field.empty()) {
        WRB_LOG(kLogError, L"%s - UID is empty", L"cmdhm_SetPrivileges");
        return false;
    }
    DbPrivilege value;
    DbPrivilege mask;
    for (const DbPrivilegeBit bit : bits) {
        AddPrivilege(mask, bit);
        if (TakeSwitch(message)) {
            AddPrivilege(value, bit);
        }
    }
    return dbSetPrivilegeW(field.c_str(), value, mask);
}

// The misspelled name is part of the log text.
bool SetWarnings(CCmdProtocol& message, const wchar_t* uid) {
    WRB_LOG_FROM(kLogDebug8, kOnCfg, __LINE__, L"[cmdhl_SetClinetCfgWarningSetting] enter");
    return SetPrivileges<DbPrivilegeBit::ScheduleScanWarning, DbPrivilegeBit::VirusMailWarning>(message, uid);
}

}  // namespace wrb
