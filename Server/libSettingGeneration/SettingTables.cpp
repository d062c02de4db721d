#include "SettingTables.h"

namespace wrb {
namespace {

using enum SettingRowKind;

template <typename Values>
constexpr SettingRow<Values> BitRow(std::wstring_view key, uint32_t Values::*word, uint32_t bits) {
    return {.key = key, .kind = Bit, .number = word, .bits = bits};
}
template <typename Values>
constexpr SettingRow<Values> IntRow(std::wstring_view key, uint32_t Values::*number) {
    return {.key = key, .kind = Int, .number = number};
}
template <typename Values>
constexpr SettingRow<Values> ListRow(SettingRowKind kind, std::wstring Values::*text, const IniListKeys& keys) {
    return {.key = {}, .kind = kind, .text = text, .list = keys};
}

using Wtp = WtpValues;
constexpr SettingRow<Wtp> kWtp[] = {
    BitRow(L"EnablePolicyIn", &Wtp::flags, Wtp::kEnablePolicyIn),
    BitRow(L"EnablePolicyOut", &Wtp::flags, Wtp::kEnablePolicyOut),
    IntRow(L"SecurityLevelIn", &Wtp::securityLevelIn),
    IntRow(L"SecurityLevelOut", &Wtp::securityLevelOut),
    BitRow(L"SendLogIn", &Wtp::flags, Wtp::kSendLogIn),
    BitRow(L"SendLogOut", &Wtp::flags, Wtp::kSendLogOut),
    IntRow(L"URLFilterCfgFlag_InOffice", &Wtp::filterFlagIn),
    IntRow(L"URLFilterCfgFlag_OutOffice", &Wtp::filterFlagOut),
    IntRow(L"URLFilterQueryMode_InOffice", &Wtp::queryModeIn),
    IntRow(L"URLFilterRatingLevel_InOffice", &Wtp::ratingLevelIn),
    IntRow(L"URLFilterRatingLevel_OutOffice", &Wtp::ratingLevelOut),
    ListRow(ProtectedList, &Wtp::approvedIn, {L"URLFilterAWSLCount_InOffice", L"URLFilterAWSL_InOffice%03d"}),
    ListRow(ProtectedList, &Wtp::approvedOut, {L"URLFilterAWSLCount_OutOffice", L"URLFilterAWSL_OutOffice%03d"}),
    ListRow(ProtectedList, &Wtp::blockedIn, {L"URLFilterBlackListCount_InOffice", L"URLFilterBlackList_InOffice%03d"}),
    ListRow(ProtectedList, &Wtp::blockedOut,
            {L"URLFilterBlackListCount_OutOffice", L"URLFilterBlackList_OutOffice%03d"}),
};

using Ncie = NcieValues;
constexpr SettingRow<Ncie> kNcie[] = {
    BitRow(L"EnableRR", &Ncie::flags, Ncie::kEnableRR), BitRow(L"EnableCNP", &Ncie::flags, Ncie::kEnableCNP),
    BitRow(L"EnableGC", &Ncie::flags, Ncie::kEnableGC), IntRow(L"ActionForCNP", &Ncie::actionForCNP),
    IntRow(L"ActionForRR", &Ncie::actionForRR),         IntRow(L"ActionForUserDefine", &Ncie::actionForUserDefine),
    IntRow(L"ActionForSBA", &Ncie::actionForSBA),
};

using Sample = SampleSubmissionValues;
constexpr SettingRow<Sample> kSampleSubmission[] = {
    BitRow(L"EnableSampleSubmission", &Sample::flags, Sample::kEnable),
};

using Sablex = SablexValues;
constexpr SettingRow<Sablex> kSablex[] = {
    BitRow(L"EnableSablex", &Sablex::flags, Sablex::kEnableSablex),
    BitRow(L"EnableFile", &Sablex::flags, Sablex::kEnableFile),
    BitRow(L"EnableProcess", &Sablex::flags, Sablex::kEnableProcess),
    IntRow(L"ActionForFile", &Sablex::actionForFile),
    IntRow(L"ActionForProcess", &Sablex::actionForProcess),
    ListRow(List, &Sablex::exceptions, {L"ExceptionCount", L"ExceptionItem%03d"}),
    ListRow(List, &Sablex::processNames, {L"DS_ProcessCount", L"DS_ProcessName%03d"}),
};

using Aggr = AggrScanValues;
constexpr SettingRow<Aggr> kAggrScan[] = {
    BitRow(L"EnableMitre", &Aggr::cfg, Aggr::kEnableMitre),
    IntRow(L"AggreDetectFlag", &Aggr::detectFlag),
    IntRow(L"AggreDetectFlagForIProduct", &Aggr::detectFlagForIProduct),
};

using Restore = FARestoreValues;
constexpr SettingItemRow<Restore> kFARestore[] = {
    {L"FASha1Hash", L"FASha1Hash_%d", &Restore::sha1Hash}, {L"FATaskId", L"FATaskId_%d", &Restore::taskId},
    {L"FAItemId", L"FAItemId_%d", &Restore::itemId},       {L"FAFileDir", L"FAFileDir_%d", &Restore::fileDir},
    {L"FAFileName", L"FAFileName_%d", &Restore::fileName},
};

using Policy = PolicyTrackingValues;
constexpr SettingItemRow<Policy> kPolicyTracking[] = {
    {L"Name", L"QMAPolicy%d_Name", &Policy::name},
    {L"LastUpdateTime", L"QMAPolicy%d_LastUpdateTime", &Policy::lastUpdateTime},
    {L"PolicyOwner", L"QMAPolicy%d_PolicyOwner", &Policy::policyOwner},
    {L"PolicyTypeID", L"QMAPolicy%d_PolicyTypeID", &Policy::policyTypeId},
};

}  // namespace

SettingTable<Wtp> SettingTableOf(const Wtp&) noexcept {
    return {L"Web Threat Protection", kWtp};
}
SettingTable<Ncie> SettingTableOf(const Ncie&) noexcept {
    return {L"NCIE Settings", kNcie};
}
SettingTable<Sample> SettingTableOf(const Sample&) noexcept {
    return {L"SAMPLE_SUBMISSION", kSampleSubmission};
}
SettingTable<Sablex> SettingTableOf(const Sablex&) noexcept {
    return {L"Sablex_Settings", kSablex};
}
SettingTable<Aggr> SettingTableOf(const Aggr&) noexcept {
    return {L"AggrScan Settings", kAggrScan};
}
SettingItemTable<Restore> SettingTableOf(const Restore&) noexcept {
    return {L"Centralized FA Restore", L"FACount", kFARestore};
}
SettingItemTable<Policy> SettingTableOf(const Policy&) noexcept {
    return {L"QM_AGENT_POLICY", L"PolicyCount", kPolicyTracking};
}

}  // namespace wrb
