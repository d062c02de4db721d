#include "cmdhm_Bundles.h"

#include "BundleContainers.h"
#include "DbAgent.h"
#include "DbBundle.h"
#include "DebugLog.h"
#include "UidField.h"

using wrb::UidField;

namespace {

// What a question to the database looks like here; `caller` is for the server's log.
template <typename Record>
using AskDbBundle = bool (*)(const wchar_t* uid, Record& record, const wchar_t* caller) noexcept;

// Asks, with the lines that most of the getters log.
template <typename Record>
bool Ask(AskDbBundle<Record> ask, const wchar_t* function, const wrb::UidField& uid, Record& record) {
    WRB_LOG(kLogDebug8, L"%s - pszUid=%s", function, uid.CStr());
    if (!ask(uid.CStr(), record, function)) {
        WRB_LOG(kLogDebug8, L"%s - failed to send command to DB server", function);
        return false;
    }
    return true;
}

template <typename Container, typename Record>
void Export(std::wstring& out, const wrb::UidField& uid, const Record& record) {
    Container container;
    container.m_uid = uid.View();
    container.m_content = record;
    container.ExportToIni(out);
}

// A text command, which travels without the caller's name.
bool AskSampleSubmission(const wchar_t* uid, tagClientSampleSubmissionCfg& cfg, const wchar_t* /*caller*/) noexcept {
    return dbGetSampleSubmissionCfgW(uid, cfg);
}

bool ExportPolicies(std::wstring& out, const wrb::UidField& uid, const wchar_t* function) {
    WRB_LOG(kLogDebug8, L"%s - pszUid=%s", function, uid.CStr());
    wrb::PolicyTrackingInfoList policies;
    if (!dbGetPolicyTrackingInfoW(uid.CStr(), policies, function)) {
        WRB_LOG(kLogDebug8, L"%s - DB_SEND_AND_RECV(DBV2_GET_POLICY_TRACKING_INFO) failed", function);
        return false;
    }
    std::wstring section;
    Export<CSettingContainerQMAgentPolicy>(section, uid, policies);
    WRB_LOG(kLogDebug8, L"%s - strOutput = %s", function, section.c_str());
    out += section;
    return true;
}

}  // namespace

bool cmdhm_GetFARestoreSetting(std::wstring& out, const wchar_t* pszUid, bool bResetCfgFlag) {
    constexpr const wchar_t* kName = L"cmdhm_GetFARestoreSetting";
    const wrb::UidField uid(pszUid);
    WRB_LOG(kLogDebug8, L"%s - cmdhm_GetFARestoreSetting(pszUid=%s, bResetCfgFlag=%d)", kName, uid.CStr(),
            static_cast<int>(bResetCfgFlag));
    wrb::FARestoreItemList items;
    if (!dbGetFARestoreItem(uid.CStr(), items, kName)) {
        WRB_LOG(kLogDebug8, L"%s - dbGetFARestoreItem is failed", kName);
        return false;
    }
    Export<CSettingContainerFARestoreSetting>(out, uid, items);
    if (bResetCfgFlag) {
        dbSetConfFlagW(uid.CStr(), 0, kFARestoreConfigFlag);
    }
    return true;
}

bool cmdhm_GetNCIESetting(std::wstring& out, const wchar_t* pszUid) {
    const wrb::UidField uid(pszUid);
    tagClientNCIECfg cfg;
    if (!Ask(dbGetClientNcieCfgW, L"cmdhm_GetNCIESetting", uid, cfg)) {
        return false;
    }
    Export<CSettingContainerNCIESetting>(out, uid, cfg);
    return true;
}

bool cmdhm_GetSampleSubmissionSetting(std::wstring& out, const wchar_t* pszUid) {
    const wrb::UidField uid(pszUid);
    tagClientSampleSubmissionCfg cfg;
    if (!Ask(AskSampleSubmission, L"cmdhm_GetSampleSubmissionSetting", uid, cfg)) {
        return false;
    }
    Export<CSettingContainerSampleSubmissionSetting>(out, uid, cfg);
    return true;
}

bool cmdhm_GetSablexSetting(std::wstring& out, const wchar_t* pszUid) {
    const wrb::UidField uid(pszUid);
    tagClientSablexConfig cfg;
    if (!Ask(dbGetSablexCfgW, L"cmdhm_GetSablexSetting", uid, cfg)) {
        return false;
    }
    Export<CSettingContainerSablexSetting>(out, uid, cfg);
    return true;
}

bool cmdhm_GetAggrScanSetting(std::wstring& out, const wchar_t* pszUid) {
    constexpr const wchar_t* kName = L"cmdhm_GetAggrScanSetting";
    const wrb::UidField uid(pszUid);
    tagClientAggrScanConfig cfg;
    if (!Ask(dbGetAggrScanCfgW, kName, uid, cfg)) {
        return false;
    }
    WRB_LOG(kLogDebug8, L"%s - enable_mitre:%d, cfg:0x%08x, aggr_flag:0x%08x, aggr_flag_iproduct:0x%08x", kName,
            (cfg.cfg & tagClientAggrScanConfig::kEnableMitre) != 0 ? 1 : 0, cfg.cfg, cfg.detectFlag,
            cfg.detectFlagForIProduct);
    Export<CSettingContainerAggrScanSetting>(out, uid, cfg);
    return true;
}

bool cmdhm_GetQMAgentPolicyInfo(std::wstring& out, const wchar_t* pszUid) {
    constexpr const wchar_t* kName = L"cmdhm_GetQMAgentPolicyInfo";
    WRB_LOG(kLogDebug8, L"%s - >>>", kName);
    const bool found = ExportPolicies(out, wrb::UidField(pszUid), kName);
    WRB_LOG(kLogDebug8, L"%s - <<<", kName);
    return found;
}
