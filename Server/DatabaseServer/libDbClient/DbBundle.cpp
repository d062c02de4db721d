#include "DbBundle.h"

#include "DbPrivilege.h"
#include "DbRequest.h"
#include "DebugLog.h"

bool dbGetClientWcsCfgW(const wchar_t* uid, tagClientWCSConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::GetClientWcsCfg, uid, caller, cfg);
}

bool dbGetClientNcieCfgW(const wchar_t* uid, tagClientNCIECfg& cfg, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::GetClientNcieCfg, uid, caller, cfg);
}

bool dbGetSablexCfgW(const wchar_t* uid, tagClientSablexConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::GetSablexCfg, uid, caller, cfg);
}

bool dbGetAggrScanCfgW(const wchar_t* uid, tagClientAggrScanConfig& cfg, const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::GetAggrScanCfg, uid, caller, cfg);
}

bool dbGetPolicyTrackingInfoW(const wchar_t* uid, wrb::PolicyTrackingInfoList& policies,
                              const wchar_t* caller) noexcept {
    return wrb::ReadDbMessage(DbCommand::GetPolicyTrackingInfo, uid, caller, policies);
}

bool dbGetFARestoreItem(const wchar_t* uid, wrb::FARestoreItemList& items, const wchar_t* caller) noexcept {
    if (!wrb::ReadDbMessage(DbCommand::GetFARestoreItem, uid, caller, items)) {
        WRB_LOG(kLogDebug8, L"%s - failed to send command to DB server", L"dbGetFARestoreItem");
        return false;
    }
    return true;
}

bool dbGetSampleSubmissionCfgW(const wchar_t* uid, tagClientSampleSubmissionCfg& cfg) noexcept {
    wrb::DbPrivilege privilege;
    if (!dbGetPrivilegeW(uid, privilege)) {
        return false;
    }
    const bool enabled = wrb::HasPrivilege(privilege, wrb::DbPrivilegeBit::SampleSubmission);
    cfg.flags = enabled ? tagClientSampleSubmissionCfg::kEnable : 0;
    return true;
}
