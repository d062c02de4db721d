// The getters of the setting bundles, against a database server that answers as a test says.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include "BundleContainers.h"
#include "CapturedLog.h"
#include "DbBundle.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "StringProtection.h"
#include "TempFolder.h"
#include "cmdhm_Bundles.h"

namespace {

using wrb::test::CFakeDbService;
using wrb::test::tagDbRequest;

constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";
constexpr wchar_t kKey[] = L"00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff";

using Get = std::function<bool(std::wstring&, const wchar_t*)>;

template <bool bReset>
bool Wtp(std::wstring& out, const wchar_t* uid) {
    return cmdhm_GetWtpSetting(out, uid, bReset);
}
template <bool bReset>
bool Restore(std::wstring& out, const wchar_t* uid) {
    return cmdhm_GetFARestoreSetting(out, uid, bReset);
}

std::string Message(const wchar_t* command, const ISerializable& record) {
    CSerializer body;
    body << record;
    return wrb::test::MessageBytes(command, {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
}

// What goes out and what the log says, `UID` standing for the agent.
struct tagCase {
    Get get;
    const wchar_t* command;
    std::string answer;
    const wchar_t* section;
    std::vector<std::wstring> found;
    std::vector<std::wstring> notFound;
};

std::vector<tagCase> Cases() {
    const auto plain = [](const std::wstring& name) { return std::vector<std::wstring>{name + L" - pszUid=UID"}; };
    const auto failed = [](const std::wstring& name) {
        return std::vector<std::wstring>{name + L" - pszUid=UID", name + L" - failed to send command to DB server"};
    };
    tagClientAggrScanConfig aggr;
    aggr.cfg = 0x101;
    aggr.detectFlag = 2;
    aggr.detectFlagForIProduct = 0xFFFFFFFF;
    tagPolicyTrackingInfoList policies;
    policies.items.emplace_back(tagPolicyTrackingValues{L"p", L"t", L"o", L"7"});
    const std::wstring restore = L"cmdhm_GetFARestoreSetting - ";
    const std::wstring policy = L"cmdhm_GetQMAgentPolicyInfo - ";
    const wchar_t* policySection =
        L"[QM_AGENT_POLICY]\nPolicyCount=1\nQMAPolicy0_Name=p\nQMAPolicy0_LastUpdateTime=t\nQMAPolicy0_PolicyOwner=o\n"
        L"QMAPolicy0_PolicyTypeID=7\n";
    return {
        {Wtp<true>,
         L"DBV2_GET_CLIENT_WCS_CFG",
         Message(L"DBV2_GET_CLIENT_WCS_CFG", tagClientWCSConfig()),
         L"[Web Threat Protection]\nEnablePolicyIn=0\nEnablePolicyOut=0\nSecurityLevelIn=0\nSecurityLevelOut=0\n"
         L"SendLogIn=0\nSendLogOut=0\nURLFilterCfgFlag_InOffice=0\nURLFilterCfgFlag_OutOffice=0\n"
         L"URLFilterQueryMode_InOffice=0\nURLFilterRatingLevel_InOffice=0\nURLFilterRatingLevel_OutOffice=0\n"
         L"URLFilterAWSLCount_InOffice=0\nURLFilterAWSLCount_OutOffice=0\nURLFilterBlackListCount_InOffice=0\n"
         L"URLFilterBlackListCount_OutOffice=0\n",
         {L"cmdhm_GetWtpSetting(pszUid=UID, bResetCfgFlag=1)"},
         {L"cmdhm_GetWtpSetting(pszUid=UID, bResetCfgFlag=1)", L"failed to send command to DB server"}},
        {Restore<false>,
         L"DBV2_GET_FA_RESTORE_ITEM",
         Message(L"DBV2_GET_FA_RESTORE_ITEM", tagFARestoreItemList()),
         L"[Centralized FA Restore]\nFACount=0\n",
         {restore + L"cmdhm_GetFARestoreSetting(pszUid=UID, bResetCfgFlag=0)"},
         {restore + L"cmdhm_GetFARestoreSetting(pszUid=UID, bResetCfgFlag=0)",
          L"dbGetFARestoreItem - failed to send command to DB server", restore + L"dbGetFARestoreItem is failed"}},
        {cmdhm_GetNCIESetting, L"DBV2_GET_CLIENT_NCIE_CFG", Message(L"DBV2_GET_CLIENT_NCIE_CFG", tagClientNCIECfg()),
         L"[NCIE Settings]\nEnableRR=0\nEnableCNP=0\nEnableGC=0\nActionForCNP=0\nActionForRR=0\n"
         L"ActionForUserDefine=0\nActionForSBA=0\n",
         plain(L"cmdhm_GetNCIESetting"), failed(L"cmdhm_GetNCIESetting")},
        // Bit 4 of the second word, and all but it.
        {cmdhm_GetSampleSubmissionSetting, L"DB_GET_PRIVILEGE", wrb::test::WideBytes(L"0\t16"),
         L"[SAMPLE_SUBMISSION]\nEnableSampleSubmission=1\n", plain(L"cmdhm_GetSampleSubmissionSetting"),
         failed(L"cmdhm_GetSampleSubmissionSetting")},
        {cmdhm_GetSampleSubmissionSetting, L"DB_GET_PRIVILEGE", wrb::test::WideBytes(L"-1\t-17"),
         L"[SAMPLE_SUBMISSION]\nEnableSampleSubmission=0\n", plain(L"cmdhm_GetSampleSubmissionSetting"),
         failed(L"cmdhm_GetSampleSubmissionSetting")},
        {cmdhm_GetSablexSetting, L"DBV2_GET_SABLEX_CFG", Message(L"DBV2_GET_SABLEX_CFG", tagClientSablexConfig()),
         L"[Sablex_Settings]\nEnableSablex=0\nEnableFile=0\nEnableProcess=0\nActionForFile=0\nActionForProcess=0\n"
         L"ExceptionCount=0\nDS_ProcessCount=0\n",
         plain(L"cmdhm_GetSablexSetting"), failed(L"cmdhm_GetSablexSetting")},
        {cmdhm_GetAggrScanSetting,
         L"DBV2_GET_AGGR_SCAN_CFG",
         Message(L"DBV2_GET_AGGR_SCAN_CFG", aggr),
         L"[AggrScan Settings]\nEnableMitre=1\nAggreDetectFlag=2\nAggreDetectFlagForIProduct=-1\n",
         {L"cmdhm_GetAggrScanSetting - pszUid=UID",
          L"cmdhm_GetAggrScanSetting - enable_mitre:1, cfg:0x00000101, aggr_flag:0x00000002, "
          L"aggr_flag_iproduct:0xffffffff"},
         failed(L"cmdhm_GetAggrScanSetting")},
        {cmdhm_GetQMAgentPolicyInfo,
         L"DBV2_GET_POLICY_TRACKING_INFO",
         Message(L"DBV2_GET_POLICY_TRACKING_INFO", policies),
         policySection,
         {policy + L">>>", policy + L"pszUid=UID",
          L"CSettingContainerQMAgentPolicy::ExportToIni - Policy name = p, PolicyOwner = o, PolicyTypeID = 7,",
          policy + L"strOutput = " + policySection, policy + L"<<<"},
         {policy + L">>>", policy + L"pszUid=UID", policy + L"DB_SEND_AND_RECV(DBV2_GET_POLICY_TRACKING_INFO) failed",
          policy + L"<<<"}},
    };
}

// The lines of level 8, which are the getters' own; the client's have others.
std::vector<std::wstring> OwnLines() {
    std::vector<std::wstring> texts;
    for (const tagCapturedLine& line : TakeCapturedLog()) {
        if (line.level == 8) {
            std::wstring& text = texts.emplace_back(line.text);
            if (const std::size_t uid = text.find(kUid); uid != text.npos) {
                text.replace(uid, std::size(kUid) - 1, L"UID");
            }
        }
    }
    return texts;
}

TEST(Bundles, SectionIsAppendedAndEveryStepLogged) {
    for (const tagCase& one : Cases()) {
        SCOPED_TRACE(testing::Message() << std::wstring(one.command));
        std::string answer = one.answer;
        const CFakeDbService db([&](const tagDbRequest&) { return answer; });
        TakeCapturedLog();
        std::wstring out = L"[Before]\n";
        EXPECT_TRUE(one.get(out, (std::wstring(kUid) + L"more").c_str()));
        EXPECT_EQ(out, std::wstring(L"[Before]\n") + one.section);
        EXPECT_EQ(OwnLines(), one.found);
        EXPECT_EQ(db.WaitFor(1).at(0).Name(), one.command);
        // The agent is not known; the answer breaks off.
        for (const std::string& bad : {std::string(), one.answer.substr(0, one.answer.size() - 2)}) {
            if (!bad.empty() && std::wstring_view(one.command) == L"DB_GET_PRIVILEGE") {
                continue;  // a text that is cut is a shorter text
            }
            answer = bad;
            TakeCapturedLog();
            EXPECT_FALSE(one.get(out, kUid));
            EXPECT_EQ(out, std::wstring(L"[Before]\n") + one.section);
            EXPECT_EQ(OwnLines(), one.notFound);
        }
    }
}

TEST(Bundles, OnRequestTheChangedBitIsCleared) {
    for (const auto& [get, bit] : {std::pair<Get, const wchar_t*>{Wtp<true>, L"131072"}, {Restore<true>, L"262144"}}) {
        // Enough zeros for the record of one and the empty list of the other.
        const CFakeDbService db([](const tagDbRequest& request) {
            return std::optional(request.IsMessage() ? wrb::test::MessageBytes(request.Name(), std::string(96, '\0'))
                                                     : "");
        });
        std::wstring out;
        ASSERT_TRUE(get(out, kUid));
        const auto requests = db.WaitFor(2);
        ASSERT_EQ(requests.size(), 2u);
        EXPECT_EQ(requests[1].Fields(), (std::vector<std::wstring>{L"DB_SET_CONF_FLAG", L"-1", kUid, L"0", bit, L"0"}));
    }
}

// Addresses go out protected or not at all.
TEST(Bundles, AddressesNeedAKey) {
    tagClientWCSConfig cfg;
    cfg.blockedIn = L"http://one.example/|http://two.example/" + std::wstring(1200, L'x');
    const CFakeDbService db([&](const tagDbRequest& request) { return Message(request.Name().c_str(), cfg); });
    const wrb::test::CTempFolder folder;
    const std::filesystem::path path = folder / L"server.ini";
    for (const std::wstring& key :
         {std::wstring(), std::wstring(L"short"), std::wstring(kKey) + L"0", std::wstring(kKey)}) {
        std::ofstream(path) << "[INI_SERVER_SECTION]\nStringProtectionKey=" << std::string(key.begin(), key.end())
                            << "\n";
        ServerIniCache().clear();
        ServerIniCache().init(path.wstring().c_str(), 6);
        TakeCapturedLog();
        std::wstring out;
        EXPECT_EQ(cmdhm_GetWtpSetting(out, kUid, true), key == kKey);
        if (key == kKey) {
            const std::size_t first = out.find(L"URLFilterBlackList_InOffice000=") + 31;
            const wrb::CStringProtection protection(*wrb::ParseProtectionKey(kKey));
            EXPECT_EQ(protection.Unprotect(out.substr(first, out.find(L'\n', first) - first)), L"http://one.example/");
            const std::size_t second = out.find(L"URLFilterBlackList_InOffice001=!CRYPT!") + 31;
            EXPECT_EQ(out.find(L"\nURLFilterBlackListCount_InOffice=2\n", second), second + 1536);
        } else {
            EXPECT_EQ(out, L"");
            EXPECT_EQ(TakeCapturedLog().back().level, static_cast<uint32_t>('E'));
        }
    }
    EXPECT_EQ(db.WaitFor(5).size(), 5u) << "the bit is cleared for the one answer that was made";
}

}  // namespace
