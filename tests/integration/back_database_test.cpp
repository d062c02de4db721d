// Every command of the database server, through the library's own client and real pipes.
#include <gmock/gmock.h>

#include <cstdlib>

#include "BackEnd.h"
#include "CalendarTime.h"
#include "DbAgent.h"
#include "DbScanCfg.h"
#include "DbScanUpdate.h"
#include "DbVexor.h"
#include "OnThreads.h"
#include "Store.h"

namespace wrb::test {
namespace {

class BackDatabaseTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { s_backEnd = std::make_unique<BackEnd>(); }
    static void TearDownTestSuite() { s_backEnd.reset(); }

    // A look into the file behind the server's back.
    static std::wstring Stored(const std::string& column) {
        const auto db = OpenStore(s_backEnd->Database());
        SqlStatement read = db->Use("SELECT " + column + " FROM agent WHERE uid = :uid");
        read.Bind(":uid", kFullAgent);
        return read.Step() ? read.Text(0) : L"nothing";
    }

    static inline std::unique_ptr<BackEnd> s_backEnd;
};

// Everything that is one number or one text, "|" behind each.
std::wstring NumbersAndTexts(const std::wstring& uid) {
    std::wstring all;
    for (const auto& [read, word] : {std::pair(&dbGetStatusW, 0u),
                                     {dbGetStatusW, 1u},
                                     {dbGetArchitectureW, 0u},
                                     {dbGetConfFlagW, 0u},
                                     {dbGetClientPlatW, 0u}}) {
        uint32_t number = 77;
        EXPECT_TRUE(read(uid.c_str(), number, word));
        all += std::to_wstring(number) + L'|';
    }
    for (const auto read : {dbGetClnDomainNameAndUidW, dbGetClnFullDomainNameAndUidW, dbGetComputerNameW, dbGetIpW,
                            dbGetProgVerW, dbGetVexorBmCfgW, dbGetBackupLogAllSessionsW}) {
        std::wstring text = L"old";
        EXPECT_TRUE(read(uid.c_str(), text, 0));
        all += text + L'|';
    }
    for (const auto& [read, parameters] : {std::pair(dbGetClientPasswordW, uid + L"\t0"),
                                           {dbGetClientPasswordW, uid + L"\t1"},
                                           {dbGetServiceSwitchW, uid},
                                           {dbGetIcrcDestScanTypeW, uid},
                                           {dbIsClientExistedW, uid}}) {
        std::wstring text = L"old";
        EXPECT_TRUE(read(parameters, text));
        all += text + L'|';
    }
    return all;
}

TEST_F(BackDatabaseTest, NumbersAndTextsOfAnAgent) {
    EXPECT_EQ(
        NumbersAndTexts(kFullAgent),
        L"5|2147483649|9|7|10|Front\td-1|Company\\Front\td-1|RECEPTION-01|192.0.2.17|14.0|<Policy/>|s 1\ts 2\ts 3|"
        L"un|ul|1\t1\t1\t1\t1\t0\t1\t1\t1\t1\t1|1|1|");
    EXPECT_EQ(NumbersAndTexts(kUnknownAgent), L"0|0|0|0|0||||||||||1\t1\t1\t1\t1\t0\t1\t1\t1\t1\t1||0|");
}

TEST_F(BackDatabaseTest, RecordsAndListsOfAnAgent) {
    uint32_t status = 0;
    uint32_t end = 0;
    EXPECT_TRUE(dbGetOppStatusW(kFullAgent, status, end) && status == 1 && end == 4'000'000'000)
        << status << ' ' << end;
    DbPrivilege privilege;
    EXPECT_TRUE(dbGetPrivilegeW(kFullAgent, privilege) && privilege.word2 == 0xFFFFFFFF) << privilege.word2;
    std::vector<std::wstring> items;
    EXPECT_TRUE(dbGetSpywareWhiteListW(kFullAgent, items));
    EXPECT_THAT(items, testing::ElementsAre(L"one", L"two"));
    EXPECT_FALSE(dbGetSpywareWhiteListW(kUnknownAgent, items));
    EXPECT_EQ(items.size(), 2u) << "as they were";
    EXPECT_TRUE(dbGetSpywareWhiteListW(kBareAgent, items) && items.empty());
    CustomBmConfig policies;
    ASSERT_TRUE(dbGetVexorCustomBmCfgW(kFullAgent, policies) && policies.policies.size() == 2);
    EXPECT_EQ(policies.policies[0].policyId, L"p0");
    EXPECT_EQ(policies.policies[0].action, 2u);
    EXPECT_TRUE(policies.policies[0].enable && !policies.policies[1].enable);
    EXPECT_TRUE(dbGetVexorCustomBmCfgW(kBareAgent, policies) && policies.policies.empty());

    EXPECT_FALSE(dbGetOppStatusW(kUnknownAgent, status, end));
    EXPECT_FALSE(dbGetPrivilegeW(kUnknownAgent, privilege));
    EXPECT_FALSE(dbGetVexorCustomBmCfgW(kUnknownAgent, policies) || dbGetVexorCustomBmCfgW(nullptr, policies));
    AllScanConfig cfg;
    AllScanLists lists;
    EXPECT_FALSE(dbGetClnAllScanCfgW(kUnknownAgent, cfg, L"") || dbGetClnAllScanExW(kUnknownAgent, lists, L""));
    EXPECT_TRUE(dbGetClnAllScanCfgW(kBareAgent, cfg, L"") && !cfg.hasConfig);
}

TEST_F(BackDatabaseTest, OtherWrites) {
    uint32_t bits = 0;
    ASSERT_TRUE(dbSetConfFlagW(kFullAgent, 0x10000, 0x1));
    EXPECT_TRUE(dbGetConfFlagW(kFullAgent, bits, 0) && bits == 0x10006);
    ASSERT_TRUE(dbSetAllConfFlgW(0x1, 0x10000));
    EXPECT_TRUE(dbGetConfFlagW(kFullAgent, bits, 0) && bits == 0x7);
    EXPECT_TRUE(dbGetConfFlagW(kBareAgent, bits, 0) && bits == 0x1);

    ASSERT_TRUE(dbSetStatusW(kFullAgent, 0xFFFFFFFF, 12));
    EXPECT_TRUE(dbGetStatusW(kFullAgent, bits) && bits == 0xFFFFFFFF);
    EXPECT_TRUE(dbGetStatusW(kFullAgent, bits, 1) && bits == 12);

    ASSERT_TRUE(dbSetPrivilegeW(kFullAgent, {0xFF, 0x0}, {0xF0, 0x1}));
    DbPrivilege privilege;
    EXPECT_TRUE(dbGetPrivilegeW(kFullAgent, privilege) && privilege.word1 == 0xF3 && privilege.word2 == 0xFFFFFFFE)
        << privilege.word1 << ' ' << privilege.word2;

    ASSERT_TRUE(dbSetCfwActIdW(kFullAgent, L"policy-9"));
    ASSERT_TRUE(dbSetCfwLogCountW(kFullAgent, -5, {1, 2, 3, 4, 5, 0xFFFFFFFF}, L"20400101120000"));
    ASSERT_TRUE(dbSetSpecialLogW(kFullAgent, 3, L"a text"));
    ASSERT_TRUE(dbGetStatusW(kFullAgent, bits));  // behind them: now they are done
    EXPECT_EQ(Stored("firewall_policy"), L"policy-9");
    EXPECT_EQ(Stored("firewall_number || ':' || firewall_count1 || ':' || firewall_count6"), L"-5:1:4294967295");
    EXPECT_EQ(Stored("firewall_time"), std::to_wstring(ConvertDateTime(L"20400101", L"120000", 0)));
    EXPECT_EQ(Stored("(SELECT log_type || text FROM special_log WHERE special_log.uid = agent.uid)"), L"3a text");
}

// A write has no answer, yet the next question must see it.
TEST_F(BackDatabaseTest, NoQuestionOvertakesTheWriteBeforeIt) {
    OnThreads(8, [](unsigned thread) {
        const std::wstring uid = ThreadAgent(thread);
        const std::wstring big(20'000, L'x');
        for (uint32_t i = 1; i <= 25; ++i) {
            ScanGroupValues values;
            values.extList = std::to_wstring(i) + big;
            values.oleLayer = i;
            EXPECT_TRUE(dbSetMscfW(uid.c_str(), {i, 0xFFFFFFFF, 0}, values));
            ScanGroupValues read;
            EXPECT_TRUE(dbGetMscfW(uid.c_str(), read, 0) && read.flags == i && read.oleLayer == i) << i;
        }
    });
}

// One of two back ends over one engine. postgres_test.py starts both, each with a side of its own, and looks at the
// rows.
TEST(BackShared, EightThreadsOfEachSideChangeTheSameAgents) {
    const wchar_t* const side = _wgetenv(L"WRB_TEST_SIDE");
    if (side == nullptr) {
        GTEST_SKIP() << "postgres_test.py runs it";
    }
    const TempFolder folder;
    const ChildProcess backEnd(kBackEnd, {L"serve", L"--log-folder", folder.Path()});
    ASSERT_TRUE(backEnd.WaitForOutput("wrbback: ready")) << backEnd.Output();
    OnThreads(8, [side](unsigned thread) {
        const std::wstring uid = ThreadAgent(thread);
        for (uint32_t bit = side[0] == L'0' ? 1 : 2; bit != 0; bit <<= 2) {
            EXPECT_TRUE(dbSetConfFlagW(uid.c_str(), bit, 0));
            EXPECT_TRUE(dbSetSpecialLogW(uid.c_str(), 1, L"text"));
            uint32_t bits = 0;
            EXPECT_TRUE(dbGetConfFlagW(uid.c_str(), bits, 0) && (bits & bit) != 0) << bit << ' ' << bits;
        }
    });
    ExpectRun(kBackEnd, {L"stop"}, 0);
    EXPECT_EQ(backEnd.WaitForExit(), 0u) << backEnd.Output();
}

}  // namespace
}  // namespace wrb::test
