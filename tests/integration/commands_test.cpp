// Commands over the real database server: what each answers for a known and an unknown agent, and its log lines.
#include <algorithm>

#include "Ask.h"
#include "BackEnd.h"
#include "CapturedLog.h"
#include "CounterSection.h"
#include "DbAgent.h"
#include "Store.h"

namespace wrb::test {
namespace {

struct Row {
    const wchar_t* command;  // behind "CMDHL_"
    const wchar_t* handler;  // behind "cmdhl_"
    const wchar_t* fields;   // after the uid, with their TABs
    const wchar_t* answer;
    const wchar_t* toUnknown = L"";
};

constexpr wchar_t kSwitches[] =
    L"[ServiceSwitch]\nEnableVEXOROnDesktop=1\nEnableVEXOROnServer=1\nEnableFWOnDesktop=1\nEnableFWOnServer=1\n"
    L"EnableDLPOnDesktop=1\nEnableDLPOnServer=0\nEnableNCIEOnDesktop=1\nEnableNCIEOnServer=1\nEnableCCSFOnDesktop=1\n"
    L"EnableCCSFOnServer=1\nEnableLightweightVEXOROnServer=1\n";

constexpr wchar_t kVexor[] =
    L"[VEXOR_BMPolicy]\nCount=2\nPolicyId0=p0\nAction0=2\nEnable0=1\nPolicyId1=p1\nAction1=1\nEnable1=0\n"
    L"[VEXOR_Exception]\nTPList=\n[VEXOR_Engine]\nEnable=0\nEnableBM=0\nEnableTD=0\nEnableTDC=0\n"
    L"EnableADC=0\nEnableSRP=0\nEnableDRE=0\nEnableUMH=0\nEnableUMHExploit=0\n[VEXOR_DACPolicy]\n"
    L"ExecutableListCount=0\nApprovedListCount=0\n[VEXOR_UserBased_DC_Config]\nDCPolicyCountIn=0\nDCPolicyCountOut=0\n"
    L"EnableIn=0\nEnableOut=0\n";

constexpr Row kRows[] = {
    {L"GET_CLN_NET_QUARANTINE_CMD", L"GetClnNetQuarantineCmd", L"", L"1"},
    {L"GET_OPPSTATUS", L"GetOppStatus", L"", L"1\t4000000000"},
    {L"GET_OPPSETTING", L"GetOppSetting", L"", L"[INI_OPP_SECTION]\n"},
    {L"IS_CONFIGFLAGSET", L"IsConfigFlagSet", L"\t12", L"1"},
    {L"IS_CONFIGFLAGSET", L"IsConfigFlagSet", L"\t4294967288", L"0"},
    {L"IS_CONFIGFLAGSET", L"IsConfigFlagSet", L"", L"0"},
    {L"GET_IP_BY_UID", L"GetIPByUid", L"", L"192.0.2.17"},
    {L"PFW_GET_CLIENT_DOMAIN", L"PFWGetClientDomain", L"", L"Front\td-1"},
    {L"PFW_GET_CLIENT_FULL_DOMAIN", L"PFWGetClientFullDomain", L"", L"Company\\Front\td-1"},
    {L"GET_INI_WHITELIST", L"GetINIWhiteList", L"", L"[INI_WHITELIST_SECTION]\nCount=2\nCount0=one\nCount1=two\n"},
    {L"GET_INI_VEXORSETTING", L"GetINIVexorSetting", L"", kVexor},
    {L"GET_INI_SERVICESWITCHSETTING", L"GetINIServiceSwitchSetting", L"", kSwitches, kSwitches},
    {L"SERVER_AUTH_SET_LOG", L"ServerAuthSetLog", L"\ta line\tmore", L"1", L"1"},
    {L"GET_SCAN_METHOD", L"GetScanMethod", L"", L"[ICRC_PER_CLIENT_CFG_SECTION]\nClientDestScanType=1\n"},
};

class Commands : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override { cmdhl_Finalize(); }

    BackEnd m_backEnd;
};

TEST_F(Commands, AnswerAKnownAndAnUnknownAgentAndLogIt) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << std::wstring(row.handler));
        const std::wstring command = std::wstring(L"CMDHL_") + row.command;
        const std::wstring head = std::wstring(L"cmdhl_") + row.handler + L": ";
        TakeCapturedLog();
        EXPECT_EQ(Ask(command.c_str(), std::wstring(kFullAgent) + row.fields), row.answer);
        const auto lines = TakeCapturedLog();
        EXPECT_EQ(lines.front(), (CapturedLine{8, head + L"uid:[" + kFullAgent + L"]"}));
        EXPECT_EQ(lines.back(), (CapturedLine{8, head + L"output:[" + row.answer + L"]"}));
        EXPECT_EQ(Ask(command.c_str(), std::wstring(kUnknownAgent) + row.fields), row.toUnknown);
        Tell(command + L"\tnobody\t" + kUnknownAgent + row.fields);
        EXPECT_EQ(TakeCapturedLog().back(),
                  (CapturedLine{'E', std::wstring(L"cmdhl_") + row.handler + L" - cmdhl_OutputCommand failed."}));
    }
}

// What an agent's status words and outbreak prevention say.
TEST_F(Commands, StatesOfAnAgent) {
    const std::pair<uint32_t, const wchar_t*> words[] = {{0, L"0"}, {1, L"1"}, {2, L"2"},
                                                         {3, L"1"}, {4, L"0"}, {0xFFFFFFFE, L"2"}};
    for (const auto& [word, answer] : words) {
        ASSERT_TRUE(dbSetStatusW(kBareAgent, 3, word));
        EXPECT_EQ(Ask(L"CMDHL_GET_CLN_NET_QUARANTINE_CMD", kBareAgent), answer) << word;
    }
    EXPECT_EQ(Ask(L"CMDHL_GET_OPPSTATUS", kBareAgent), L"0\t0");
    EXPECT_EQ(Ask(L"CMDHL_GET_INI_WHITELIST", kBareAgent), L"[INI_WHITELIST_SECTION]\nCount=0\n");
    Tell(std::wstring(L"CMDHL_PFW_SET_POLICY_ID\t") + kBareAgent + L"\tpolicy one");
    Tell(std::wstring(L"CMDHL_SERVER_AUTH_SET_LOG\tnobody\t") + kBareAgent + L"\t" + std::wstring(5000, L'x'));
    EXPECT_TRUE(dbSetConfFlagW(kBareAgent, 1, 0));  // writes are carried out in their order
    EXPECT_EQ(Ask(L"CMDHL_IS_CONFIGFLAGSET", std::wstring(kBareAgent) + L"\t1"), L"1");
    const auto db = OpenStore(m_backEnd.Database());
    EXPECT_EQ(db->NumberOf("SELECT firewall_policy = 'policy one' FROM agent WHERE computer = 'NEW-LAPTOP'"), 1);
    EXPECT_EQ(db->NumberOf("SELECT length(text) * 10 + log_type FROM special_log"), 40961);
}

TEST(CommandsWithoutADatabase, AWriteThatCannotBeSentIsCountedAndToldAsFailed) {
    cmdhl_Initialize(L"", L"", nullptr);
    CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), CounterAttach::Attached) << error;
    Tell(std::wstring(L"CMDHL_PFW_SET_POLICY_ID\t") + kBareAgent + L"\tpolicy one");
    EXPECT_EQ(counters.Slot(49).failures, 1u);
    EXPECT_EQ(Ask(L"CMDHL_SERVER_AUTH_SET_LOG", std::wstring(kBareAgent) + L"\ttext"), L"0");
    cmdhl_Finalize();
}

}  // namespace
}  // namespace wrb::test
