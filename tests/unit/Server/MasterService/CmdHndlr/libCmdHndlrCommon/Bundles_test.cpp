// The getters of the setting bundles, against a database server that answers as a test says.
#include <gtest/gtest.h>

#include <regex>

#include "AgentProtection.h"
#include "DbBundle.h"
#include "Fixtures.h"
#include "ManualClock.h"
#include "StringProtection.h"
#include "cmdhm_Bundles.h"

namespace {

using wrb::test::DbRequest;
using wrb::test::FakeDbService;
using wrb::test::WideBytes;

constexpr wchar_t kKeyAndMore[] = L"00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff0";
const std::wstring kKey(kKeyAndMore, 64);

// In the lines `@` stands for the agent, `~` for the getter's name and `#` for the section.
struct Case {
    bool (*get)(std::wstring& out, const wchar_t* uid);
    const wchar_t* name;
    const wchar_t* command;
    std::string answer;
    const wchar_t* section;
    const wchar_t* found = L"~ - pszUid=@\n";
    const wchar_t* notFound = L"~ - pszUid=@\n~ - failed to send command to DB server\n";
};

std::vector<Case> Cases() {
    tagClientWCSConfig wtp;
    wtp.flags = 0x9;
    wtp.approvedIn = L"|x";  // no item, so no key is missed
    wrb::BundleContent<wrb::PolicyTrackingValues> policies;
    policies.items.emplace_back(wrb::PolicyTrackingValues{L"100%s", L"t", L"o", L"7"});
    return {
        {[](std::wstring& out, const wchar_t* uid) { return cmdhm_GetWtpSetting(out, uid, true); },
         L"cmdhm_GetWtpSetting", L"DBV2_GET_CLIENT_WCS_CFG", RecordMessage(L"DBV2_GET_CLIENT_WCS_CFG", wtp),
         L"[Web Threat Protection]\nEnablePolicyIn=1\nEnablePolicyOut=0\nSecurityLevelIn=0\nSecurityLevelOut=0\n"
         L"SendLogIn=0\nSendLogOut=1\nURLFilterCfgFlag_InOffice=0\nURLFilterCfgFlag_OutOffice=0\n"
         L"URLFilterQueryMode_InOffice=0\nURLFilterRatingLevel_InOffice=0\nURLFilterRatingLevel_OutOffice=0\n"
         L"URLFilterAWSLCount_InOffice=0\nURLFilterAWSLCount_OutOffice=0\nURLFilterBlackListCount_InOffice=0\n"
         L"URLFilterBlackListCount_OutOffice=0\n",
         L"~(pszUid=@, bResetCfgFlag=1)\n", L"~(pszUid=@, bResetCfgFlag=1)\nfailed to send command to DB server\n"},
        {[](std::wstring& out, const wchar_t* uid) { return cmdhm_GetFARestoreSetting(out, uid, false); },
         L"cmdhm_GetFARestoreSetting", L"DBV2_GET_FA_RESTORE_ITEM",
         RecordMessage(L"DBV2_GET_FA_RESTORE_ITEM", wrb::BundleContent<wrb::FARestoreValues>()),
         L"[Centralized FA Restore]\nFACount=0\n", L"~ - cmdhm_GetFARestoreSetting(pszUid=@, bResetCfgFlag=0)\n",
         L"~ - cmdhm_GetFARestoreSetting(pszUid=@, bResetCfgFlag=0)\n"
         L"dbGetFARestoreItem - failed to send command to DB server\n~ - dbGetFARestoreItem is failed\n"},
        {cmdhm_GetNCIESetting, L"cmdhm_GetNCIESetting", L"DBV2_GET_CLIENT_NCIE_CFG",
         RecordMessage(L"DBV2_GET_CLIENT_NCIE_CFG", tagClientNCIECfg({0x1, 1, 2, 3, 4})),
         L"[NCIE Settings]\nEnableRR=1\nEnableCNP=0\nEnableGC=0\nActionForCNP=1\nActionForRR=2\n"
         L"ActionForUserDefine=3\nActionForSBA=4\n"},
        // Bit 4 of the second word, and all but it.
        {cmdhm_GetSampleSubmissionSetting, L"cmdhm_GetSampleSubmissionSetting", L"DB_GET_PRIVILEGE",
         WideBytes(L"0\t16"), L"[SAMPLE_SUBMISSION]\nEnableSampleSubmission=1\n"},
        {cmdhm_GetSampleSubmissionSetting, L"cmdhm_GetSampleSubmissionSetting", L"DB_GET_PRIVILEGE",
         WideBytes(L"-1\t-17"), L"[SAMPLE_SUBMISSION]\nEnableSampleSubmission=0\n"},
        // Any number but 0 is on; what is missing or no number is off.
        {cmdhm_GetServiceSwitch, L"cmdhm_GetServiceSwitch", L"DB_GET_SERVICE_SWITCH",
         WideBytes(L"-1\t0\t2\t-2147483648\t4294967296\t-0\tx\t-99999999999999999999"),
         L"[ServiceSwitch]\nEnableVEXOROnDesktop=1\nEnableVEXOROnServer=0\nEnableFWOnDesktop=1\nEnableFWOnServer=1\n"
         L"EnableDLPOnDesktop=1\nEnableDLPOnServer=0\nEnableNCIEOnDesktop=0\nEnableNCIEOnServer=1\n"
         L"EnableCCSFOnDesktop=0\nEnableCCSFOnServer=0\nEnableLightweightVEXOROnServer=0\n"},
        {cmdhm_GetSablexSetting, L"cmdhm_GetSablexSetting", L"DBV2_GET_SABLEX_CFG",
         RecordMessage(L"DBV2_GET_SABLEX_CFG", tagClientSablexConfig({0x1, 1, 2, L"C:\\a b.exe|D:\\", L""})),
         L"[Sablex_Settings]\nEnableSablex=1\nEnableFile=0\nEnableProcess=0\nActionForFile=1\nActionForProcess=2\n"
         L"ExceptionCount=2\nExceptionItem000=C:\\a b.exe\nExceptionItem001=D:\\\nDS_ProcessCount=0\n"},
        {cmdhm_GetAggrScanSetting, L"cmdhm_GetAggrScanSetting", L"DBV2_GET_AGGR_SCAN_CFG",
         RecordMessage(L"DBV2_GET_AGGR_SCAN_CFG", tagClientAggrScanConfig({0x101, 2, 0xFFFFFFFF})),
         L"[AggrScan Settings]\nEnableMitre=1\nAggreDetectFlag=2\nAggreDetectFlagForIProduct=-1\n",
         L"~ - pszUid=@\n"
         L"~ - enable_mitre:1, cfg:0x00000101, aggr_flag:0x00000002, aggr_flag_iproduct:0xffffffff\n"},
        {cmdhm_GetQMAgentPolicyInfo, L"cmdhm_GetQMAgentPolicyInfo", L"DBV2_GET_POLICY_TRACKING_INFO",
         RecordMessage(L"DBV2_GET_POLICY_TRACKING_INFO", policies),
         L"[QM_AGENT_POLICY]\nPolicyCount=1\nQMAPolicy0_Name=100%s\nQMAPolicy0_LastUpdateTime=t\n"
         L"QMAPolicy0_PolicyOwner=o\nQMAPolicy0_PolicyTypeID=7\n",
         L"~ - >>>\n~ - pszUid=@\nCSettingContainerQMAgentPolicy::ExportToIni - Policy name = 100%s, PolicyOwner = o, "
         L"PolicyTypeID = 7,\n~ - strOutput = #\n~ - <<<\n",
         L"~ - >>>\n~ - pszUid=@\n~ - DB_SEND_AND_RECV(DBV2_GET_POLICY_TRACKING_INFO) failed\n~ - <<<\n"},
    };
}

std::wstring Filled(std::wstring lines, const Case& one) {
    for (const auto& [mark, text] : {std::pair(L"#", one.section), std::pair(L"@", kUid), std::pair(L"~", one.name)}) {
        lines = std::regex_replace(lines, std::wregex(mark), text);
    }
    return lines;
}

TEST(Bundles, SectionIsAppendedAndEveryStepLogged) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(testing::Message() << std::wstring(one.name));
        std::string answer = one.answer;
        const FakeDbService db([&](const DbRequest&) { return answer; });
        TakeOwnText();
        std::wstring out = L"[Before]\n";
        EXPECT_TRUE(one.get(out, (std::wstring(kUid) + L"more").c_str()));
        EXPECT_EQ(out, std::wstring(L"[Before]\n") + one.section);
        EXPECT_EQ(TakeOwnText(), Filled(one.found, one));
        const DbRequest request = db.WaitFor(1).at(0);
        EXPECT_EQ(request.Name(), one.command);
        // The server is told who asks, but in the text form.
        EXPECT_EQ(request.headerMessage.find(WideBytes(one.name)) != std::string::npos, request.IsMessage());
        // The agent is not known; the answer breaks off. A text that breaks off is a shorter text.
        const std::string cut = request.IsMessage() ? answer.substr(0, answer.size() - 2) : "";
        const std::wstring before = out;
        for (const std::string& bad : {std::string(), cut}) {
            answer = bad;
            TakeOwnText();
            EXPECT_FALSE(one.get(out, kUid));
            EXPECT_EQ(out, before);
            EXPECT_EQ(TakeOwnText(), Filled(one.notFound, one));
        }
    }
}

TEST(WithheldAnswers, OneLineAnHourTellsTheNumberSince) {
    constexpr uint32_t kHour = 3'600'000;
    ManualClock clock(0xFFFFFFFF);  // the tick wraps
    wrb::WithheldAnswers withheld(clock);
    const struct {
        uint32_t later;
        uint32_t logged;
    } steps[] = {{0, 1}, {0, 0}, {kHour - 1, 0}, {1, 3}, {kHour, 1}, {kHour / 2, 0}, {kHour, 2}};
    for (const auto& step : steps) {
        clock.AdvanceTick(step.later);
        EXPECT_EQ(withheld.Add(), step.logged);
    }
}

// Addresses go out protected or not at all.
TEST(Bundles, AddressesNeedAKey) {
    tagClientWCSConfig cfg;
    cfg.blockedIn = L"http://one.example/|http://two.example/" + std::wstring(1200, L'x');
    const FakeDbService db([&](const DbRequest& request) { return RecordMessage(request.Name(), cfg); });
    std::wstring out;
    TakeCapturedLog();
    for (const std::wstring key : {L"", L"short", kKeyAndMore}) {
        const BoundIni ini(L"[INI_SERVER_SECTION]\nStringProtectionKey=" + key + L"\n", ServerIniCache());
        EXPECT_FALSE(cmdhm_GetWtpSetting(out, kUid, true));
        EXPECT_EQ(out, L"");
    }
    std::vector<CapturedLine> lines = TakeCapturedLog();
    std::erase_if(lines, [](const CapturedLine& line) { return line.level == 8 || line.level == 'D'; });
    EXPECT_EQ(lines, (std::vector<CapturedLine>{
                         {'W',
                          L"cmdhm_GetWtpSetting - the server INI has no key of 64 hexadecimal digits: "
                          L"[INI_SERVER_SECTION] StringProtectionKey. Answers withheld since the last such line: "
                          L"1"}}))
        << "the next line comes after an hour";
    const BoundIni ini(L"[INI_SERVER_SECTION]\nStringProtectionKey=" + kKey + L"\n", ServerIniCache());
    EXPECT_TRUE(cmdhm_GetWtpSetting(out, kUid, true));
    const std::size_t first = out.find(L"URLFilterBlackList_InOffice000=") + 31;
    const wrb::StringProtection protection(*wrb::ParseProtectionKey(kKey));
    EXPECT_EQ(protection.Unprotect(out.substr(first, out.find(L'\n', first) - first)), L"http://one.example/");
    const std::size_t second = out.find(L"URLFilterBlackList_InOffice001=!CRYPT!") + 31;
    EXPECT_EQ(out.find(L"\nURLFilterBlackListCount_InOffice=2\n", second), second + 1536);
    EXPECT_EQ(db.WaitFor(5).size(), 5u) << "the bit is cleared for the one answer that was made";
}

}  // namespace
