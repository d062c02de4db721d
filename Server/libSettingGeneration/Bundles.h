// The setting bundles, one descriptor each: its values, its rows, what else belongs to it. A new bundle is a descriptor
// here and in the list at the end, a row in DbCommands.inc, and a row in CommandTable.inc if agents ask for it.
#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>

#include "Bundle.h"
#include "DebugLog.h"

namespace wrb {

// ---- rows ----

template <typename Values>
constexpr BundleRow<Values> BitRow(const wchar_t* key, uint32_t Values::*word, const char* column, uint32_t bits) {
    return {.kind = BundleRowKind::Bit, .key = key, .column = column, .number = word, .bits = bits};
}
template <typename Values>
constexpr BundleRow<Values> IntRow(const wchar_t* key, uint32_t Values::*number, const char* column) {
    return {.kind = BundleRowKind::Int, .key = key, .column = column, .number = number};
}
template <typename Values>
constexpr BundleRow<Values> TextRow(const wchar_t* key, std::wstring Values::*text, const char* column,
                                    const wchar_t* seedKey = nullptr) {
    return {.kind = BundleRowKind::Text, .key = key, .column = column, .text = text, .seedKey = seedKey};
}
template <typename Values>
constexpr BundleRow<Values> ListRow(BundleRowKind kind, const wchar_t* countKey, const wchar_t* itemKey,
                                    std::wstring Values::*text, const char* column) {
    return {.kind = kind, .key = itemKey, .column = column, .text = text, .countKey = countKey};
}

// ---- web threat protection; "in" and "out" of the office ----

struct WtpValues {
    uint32_t flags = 0;
    uint32_t securityLevelIn = 0;
    uint32_t securityLevelOut = 0;
    uint32_t filterFlagIn = 0;
    uint32_t filterFlagOut = 0;
    uint32_t queryModeIn = 0;
    uint32_t ratingLevelIn = 0;
    uint32_t ratingLevelOut = 0;
    std::wstring approvedIn;  // the lists have "|" between their addresses
    std::wstring approvedOut;
    std::wstring blockedIn;
    std::wstring blockedOut;
};

inline constexpr BundleRow<WtpValues> kWtpRows[] = {
    BitRow(L"EnablePolicyIn", &WtpValues::flags, "flags", 0x1),
    BitRow(L"EnablePolicyOut", &WtpValues::flags, "flags", 0x2),
    IntRow(L"SecurityLevelIn", &WtpValues::securityLevelIn, "security_in"),
    IntRow(L"SecurityLevelOut", &WtpValues::securityLevelOut, "security_out"),
    BitRow(L"SendLogIn", &WtpValues::flags, "flags", 0x4),
    BitRow(L"SendLogOut", &WtpValues::flags, "flags", 0x8),
    IntRow(L"URLFilterCfgFlag_InOffice", &WtpValues::filterFlagIn, "filter_flag_in"),
    IntRow(L"URLFilterCfgFlag_OutOffice", &WtpValues::filterFlagOut, "filter_flag_out"),
    IntRow(L"URLFilterQueryMode_InOffice", &WtpValues::queryModeIn, "query_mode_in"),
    IntRow(L"URLFilterRatingLevel_InOffice", &WtpValues::ratingLevelIn, "rating_level_in"),
    IntRow(L"URLFilterRatingLevel_OutOffice", &WtpValues::ratingLevelOut, "rating_level_out"),
    ListRow(BundleRowKind::ProtectedList, L"URLFilterAWSLCount_InOffice", L"URLFilterAWSL_InOffice%03d",
            &WtpValues::approvedIn, "approved_in"),
    ListRow(BundleRowKind::ProtectedList, L"URLFilterAWSLCount_OutOffice", L"URLFilterAWSL_OutOffice%03d",
            &WtpValues::approvedOut, "approved_out"),
    ListRow(BundleRowKind::ProtectedList, L"URLFilterBlackListCount_InOffice", L"URLFilterBlackList_InOffice%03d",
            &WtpValues::blockedIn, "blocked_in"),
    ListRow(BundleRowKind::ProtectedList, L"URLFilterBlackListCount_OutOffice", L"URLFilterBlackList_OutOffice%03d",
            &WtpValues::blockedOut, "blocked_out"),
};

template <>
inline constexpr Bundle<WtpValues> kBundle<WtpValues> = {
    .section = L"Web Threat Protection",
    .command = L"DBV2_GET_CLIENT_WCS_CFG",
    .configBit = 0x20000,
    .table = "web_threat",
    .seedKey = "webThreat",
    .log = {.getter = L"cmdhm_GetWtpSetting",
            .enter = L"%s(pszUid=%s, bResetCfgFlag=%d)",
            .failed = L"failed to send command to DB server"},
    .rows = kWtpRows,
};

// ---- centralized file-analysis restore: files that an agent is to put back after their analysis ----

struct FARestoreValues {
    std::wstring sha1Hash;
    std::wstring taskId;
    std::wstring itemId;
    std::wstring fileDir;
    std::wstring fileName;
};

inline constexpr BundleRow<FARestoreValues> kFARestoreRows[] = {
    TextRow(L"FASha1Hash_%d", &FARestoreValues::sha1Hash, "sha1_hash", L"FASha1Hash"),
    TextRow(L"FATaskId_%d", &FARestoreValues::taskId, "task_id", L"FATaskId"),
    TextRow(L"FAItemId_%d", &FARestoreValues::itemId, "item_id", L"FAItemId"),
    TextRow(L"FAFileDir_%d", &FARestoreValues::fileDir, "file_dir", L"FAFileDir"),
    TextRow(L"FAFileName_%d", &FARestoreValues::fileName, "file_name", L"FAFileName"),
};

template <>
inline constexpr Bundle<FARestoreValues> kBundle<FARestoreValues> = {
    .section = L"Centralized FA Restore",
    .countKey = L"FACount",
    .command = L"DBV2_GET_FA_RESTORE_ITEM",
    .configBit = 0x40000,
    .table = "fa_restore_item",
    .seedKey = "restoreItems",
    .log = {.getter = L"cmdhm_GetFARestoreSetting",
            .enter = L"%s - cmdhm_GetFARestoreSetting(pszUid=%s, bResetCfgFlag=%d)",
            .failed = L"%s - dbGetFARestoreItem is failed",
            .reader = L"dbGetFARestoreItem"},
    .rows = kFARestoreRows,
};

// ---- network content inspection ----

struct NcieValues {
    uint32_t flags = 0;
    uint32_t actionForCNP = 0;
    uint32_t actionForRR = 0;
    uint32_t actionForUserDefine = 0;
    uint32_t actionForSBA = 0;
};

inline constexpr BundleRow<NcieValues> kNcieRows[] = {
    BitRow(L"EnableRR", &NcieValues::flags, "flags", 0x1),
    BitRow(L"EnableCNP", &NcieValues::flags, "flags", 0x2),
    BitRow(L"EnableGC", &NcieValues::flags, "flags", 0x4),
    IntRow(L"ActionForCNP", &NcieValues::actionForCNP, "action_for_cnp"),
    IntRow(L"ActionForRR", &NcieValues::actionForRR, "action_for_rr"),
    IntRow(L"ActionForUserDefine", &NcieValues::actionForUserDefine, "action_for_user_define"),
    IntRow(L"ActionForSBA", &NcieValues::actionForSBA, "action_for_sba"),
};

template <>
inline constexpr Bundle<NcieValues> kBundle<NcieValues> = {
    .section = L"NCIE Settings",
    .command = L"DBV2_GET_CLIENT_NCIE_CFG",
    .table = "ncie",
    .seedKey = "ncie",
    .log = {.getter = L"cmdhm_GetNCIESetting"},
    .rows = kNcieRows,
};

// ---- sample submission: a bit of the agent's privilege words, never stored by itself (DbBundle.h) ----

struct SampleSubmissionValues {
    static constexpr uint32_t kEnable = 0x1;

    uint32_t flags = 0;
};

inline constexpr BundleRow<SampleSubmissionValues> kSampleSubmissionRows[] = {
    BitRow(L"EnableSampleSubmission", &SampleSubmissionValues::flags, "flags", SampleSubmissionValues::kEnable),
};

template <>
inline constexpr Bundle<SampleSubmissionValues> kBundle<SampleSubmissionValues> = {
    .section = L"SAMPLE_SUBMISSION",
    .command = L"DB_GET_PRIVILEGE",
    .log = {.getter = L"cmdhm_GetSampleSubmissionSetting"},
    .rows = kSampleSubmissionRows,
};

// ---- the Sablex feature ----

struct SablexValues {
    uint32_t flags = 0;
    uint32_t actionForFile = 0;
    uint32_t actionForProcess = 0;
    std::wstring exceptions;
    std::wstring processNames;
};

inline constexpr BundleRow<SablexValues> kSablexRows[] = {
    BitRow(L"EnableSablex", &SablexValues::flags, "flags", 0x1),
    BitRow(L"EnableFile", &SablexValues::flags, "flags", 0x2),
    BitRow(L"EnableProcess", &SablexValues::flags, "flags", 0x4),
    IntRow(L"ActionForFile", &SablexValues::actionForFile, "action_for_file"),
    IntRow(L"ActionForProcess", &SablexValues::actionForProcess, "action_for_process"),
    ListRow(BundleRowKind::List, L"ExceptionCount", L"ExceptionItem%03d", &SablexValues::exceptions, "exceptions"),
    ListRow(BundleRowKind::List, L"DS_ProcessCount", L"DS_ProcessName%03d", &SablexValues::processNames,
            "process_names"),
};

template <>
inline constexpr Bundle<SablexValues> kBundle<SablexValues> = {
    .section = L"Sablex_Settings",
    .command = L"DBV2_GET_SABLEX_CFG",
    .table = "sablex",
    .seedKey = "sablex",
    .log = {.getter = L"cmdhm_GetSablexSetting"},
    .rows = kSablexRows,
};

// ---- aggressive scanning ----

struct AggrScanValues {
    static constexpr uint32_t kEnableMitre = 0x1;

    uint32_t cfg = 0;
    uint32_t detectFlag = 0;
    uint32_t detectFlagForIProduct = 0;
};

inline constexpr BundleRow<AggrScanValues> kAggrScanRows[] = {
    BitRow(L"EnableMitre", &AggrScanValues::cfg, "cfg", AggrScanValues::kEnableMitre),
    IntRow(L"AggreDetectFlag", &AggrScanValues::detectFlag, "detect_flag"),
    IntRow(L"AggreDetectFlagForIProduct", &AggrScanValues::detectFlagForIProduct, "detect_flag_for_iproduct"),
};

template <>
inline constexpr Bundle<AggrScanValues> kBundle<AggrScanValues> = {
    .section = L"AggrScan Settings",
    .command = L"DBV2_GET_AGGR_SCAN_CFG",
    .table = "aggr_scan",
    .seedKey = "aggrScan",
    .log = {.getter = L"cmdhm_GetAggrScanSetting"},
    .logRecord =
        [](const AggrScanValues& values) {
            WRB_LOG(kLogDebug8, L"%s - enable_mitre:%d, cfg:0x%08x, aggr_flag:0x%08x, aggr_flag_iproduct:0x%08x",
                    L"cmdhm_GetAggrScanSetting", (values.cfg & AggrScanValues::kEnableMitre) != 0 ? 1 : 0, values.cfg,
                    values.detectFlag, values.detectFlagForIProduct);
        },
    .rows = kAggrScanRows,
};

// ---- policies that the central-management agent has put on the agent ----

struct PolicyTrackingValues {
    std::wstring name;
    std::wstring lastUpdateTime;  // as the database writes it
    std::wstring policyOwner;
    std::wstring policyTypeId;
};

inline constexpr BundleRow<PolicyTrackingValues> kPolicyTrackingRows[] = {
    TextRow(L"QMAPolicy%d_Name", &PolicyTrackingValues::name, "name", L"Name"),
    TextRow(L"QMAPolicy%d_LastUpdateTime", &PolicyTrackingValues::lastUpdateTime, "last_update_time",
            L"LastUpdateTime"),
    TextRow(L"QMAPolicy%d_PolicyOwner", &PolicyTrackingValues::policyOwner, "policy_owner", L"PolicyOwner"),
    TextRow(L"QMAPolicy%d_PolicyTypeID", &PolicyTrackingValues::policyTypeId, "policy_type_id", L"PolicyTypeID"),
};

template <>
inline constexpr Bundle<PolicyTrackingValues> kBundle<PolicyTrackingValues> = {
    .section = L"QM_AGENT_POLICY",
    .countKey = L"PolicyCount",
    .command = L"DBV2_GET_POLICY_TRACKING_INFO",
    .table = "agent_policy",
    .seedKey = "agentPolicies",
    .log = {.getter = L"cmdhm_GetQMAgentPolicyInfo",
            .failed = L"%s - DB_SEND_AND_RECV(DBV2_GET_POLICY_TRACKING_INFO) failed",
            .traced = true},
    .logRecord =
        [](const PolicyTrackingValues& policy) {
            WRB_LOG(kLogDebug8, L"%s - Policy name = %s, PolicyOwner = %s, PolicyTypeID = %s,",
                    L"CSettingContainerQMAgentPolicy::ExportToIni", policy.name.c_str(), policy.policyOwner.c_str(),
                    policy.policyTypeId.c_str());
        },
    .rows = kPolicyTrackingRows,
};

// ---- switches of whole services; server-wide, whatever the agent ----

struct ServiceSwitchValues {
    uint32_t flags = 0;
};

inline constexpr BundleRow<ServiceSwitchValues> kServiceSwitchRows[] = {
    BitRow(L"EnableVEXOROnDesktop", &ServiceSwitchValues::flags, "flags", 0x1),
    BitRow(L"EnableVEXOROnServer", &ServiceSwitchValues::flags, "flags", 0x2),
    BitRow(L"EnableFWOnDesktop", &ServiceSwitchValues::flags, "flags", 0x4),
    BitRow(L"EnableFWOnServer", &ServiceSwitchValues::flags, "flags", 0x8),
    BitRow(L"EnableDLPOnDesktop", &ServiceSwitchValues::flags, "flags", 0x10),
    BitRow(L"EnableDLPOnServer", &ServiceSwitchValues::flags, "flags", 0x20),
    BitRow(L"EnableNCIEOnDesktop", &ServiceSwitchValues::flags, "flags", 0x40),
    BitRow(L"EnableNCIEOnServer", &ServiceSwitchValues::flags, "flags", 0x80),
    BitRow(L"EnableCCSFOnDesktop", &ServiceSwitchValues::flags, "flags", 0x100),
    BitRow(L"EnableCCSFOnServer", &ServiceSwitchValues::flags, "flags", 0x200),
    BitRow(L"EnableLightweightVEXOROnServer", &ServiceSwitchValues::flags, "flags", 0x400),
};

template <>
inline constexpr Bundle<ServiceSwitchValues> kBundle<ServiceSwitchValues> = {
    .section = L"ServiceSwitch",
    .command = L"DB_GET_SERVICE_SWITCH",
    .log = {.getter = L"cmdhm_GetServiceSwitch"},
    .rows = kServiceSwitchRows,
};

// ---- how an agent scans ----

struct ScanTypeValues {
    uint32_t clientDestScanType = 0;
};

inline constexpr BundleRow<ScanTypeValues> kScanTypeRows[] = {
    IntRow(L"ClientDestScanType", &ScanTypeValues::clientDestScanType, "scan_method"),
};

template <>
inline constexpr Bundle<ScanTypeValues> kBundle<ScanTypeValues> = {
    .section = L"ICRC_PER_CLIENT_CFG_SECTION",
    .command = L"DB_GET_ICRC_DEST_SCAN_TYPE",
    .log = {.getter = L"cmdhm_GetScanType"},
    .rows = kScanTypeRows,
};

// ---- spyware that the administrator has approved ----

struct SpywareWhiteListValues {
    std::wstring item;
};

inline constexpr BundleRow<SpywareWhiteListValues> kSpywareWhiteListRows[] = {
    TextRow(L"Count%d", &SpywareWhiteListValues::item, "item"),
};

template <>
inline constexpr Bundle<SpywareWhiteListValues> kBundle<SpywareWhiteListValues> = {
    .section = L"INI_WHITELIST_SECTION",
    .countKey = L"Count",
    .command = L"DB_GET_SPYWARE_WHITE_LIST",
    .log = {.getter = L"cmdhm_GetSpywareWhiteList"},
    .rows = kSpywareWhiteListRows,
};

// ---- all of them ----

using Bundles = std::tuple<WtpValues, FARestoreValues, NcieValues, SampleSubmissionValues, SablexValues, AggrScanValues,
                           PolicyTrackingValues, ServiceSwitchValues, ScanTypeValues, SpywareWhiteListValues>;

template <typename Values, typename... All>
constexpr std::size_t BundlePlace(const std::tuple<All...>*) {
    std::size_t place = 0;
    static_cast<void>(((std::is_same_v<Values, All> || (++place, false)) || ...));
    return place;
}

// Does not compile for values that the list lacks.
template <typename Values>
requires(BundlePlace<Values>(static_cast<const Bundles*>(nullptr)) <
         std::tuple_size_v<Bundles>) inline constexpr std::size_t kBundlePlace =
    BundlePlace<Values>(static_cast<const Bundles*>(nullptr));

}  // namespace wrb
