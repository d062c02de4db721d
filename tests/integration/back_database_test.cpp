// Every command of the database server, through the library's own client and real pipes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "BackEnd.h"
#include "DbAgent.h"
#include "DbAllScan.h"
#include "DbFirewall.h"
#include "DbScanCfg.h"
#include "DbScanUpdate.h"
#include "DbVexor.h"
#include "OnThreads.h"
#include "Store.h"

namespace wrb::test {
namespace {

using testing::ElementsAre;

class CBackDatabaseTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { s_backEnd = std::make_unique<CBackEnd>(); }
    static void TearDownTestSuite() { s_backEnd.reset(); }

    // A look into the file behind the server's back.
    static std::wstring Stored(const std::string& column) {
        const auto db = OpenStore(s_backEnd->Database());
        CSqliteStatement read = db->Use("SELECT " + column + " FROM agent WHERE uid = :uid");
        read.Bind(":uid", kFullAgent);
        return read.Step() ? read.Text(0) : L"nothing";
    }

    static inline std::unique_ptr<CBackEnd> s_backEnd;
};

TEST_F(CBackDatabaseTest, NumbersAndTextsOfAnAgent) {
    const auto numberOf = [](auto read, uint32_t word) {
        return [=](const wchar_t* uid) {
            uint32_t number = 77;
            EXPECT_TRUE(read(uid, number, word));
            return std::to_wstring(number);
        };
    };
    const auto textOf = [](auto read) {
        return [=](const wchar_t* uid) {
            std::wstring text = L"old";
            EXPECT_TRUE(read(uid, text, 0));
            return text;
        };
    };
    const auto prebuilt = [](auto read, const wchar_t* rest) {
        return [=](const wchar_t* uid) {
            std::wstring text;
            EXPECT_TRUE(read(std::wstring(uid) + rest, text));
            return text;
        };
    };
    const struct {
        std::function<std::wstring(const wchar_t* uid)> read;
        const wchar_t* full;
        const wchar_t* unknown;
    } kReads[] = {
        {numberOf(dbGetStatusW, 0), L"5", L"0"},
        {numberOf(dbGetStatusW, 1), L"2147483649", L"0"},
        {numberOf(dbGetArchitectureW, 0), L"9", L"0"},
        {numberOf(dbGetConfFlagW, 0), L"7", L"0"},
        {numberOf(dbGetClientPlatW, 0), L"10", L"0"},
        {textOf(dbGetClnDomainNameAndUidW), L"Front\td-1", L""},
        {textOf(dbGetClnFullDomainNameAndUidW), L"Company\\Front\td-1", L""},
        {textOf(dbGetComputerNameW), L"RECEPTION-01", L""},
        {textOf(dbGetIpW), L"192.0.2.17", L""},
        {textOf(dbGetProgVerW), L"14.0", L""},
        {textOf(dbGetVexorBmCfgW), L"b=1", L""},
        {textOf(dbGetBackupLogAllSessionsW), L"s 1\ts 2\ts 3", L""},
        {prebuilt(dbGetClientPasswordW, L"\t0"), L"un", L""},
        {prebuilt(dbGetClientPasswordW, L"\t1"), L"ul", L""},
        {prebuilt(dbGetServiceSwitchW, L""), L"1\t1\t1\t1\t1\t0\t1\t1\t1\t1\t1", L"1\t1\t1\t1\t1\t0\t1\t1\t1\t1\t1"},
        {prebuilt(dbGetIcrcDestScanTypeW, L""), L"1", L""},
        {prebuilt(dbIsClientExistedW, L""), L"1", L"0"},
    };
    for (const auto& [read, full, unknown] : kReads) {
        EXPECT_EQ(read(kFullAgent), full);
        EXPECT_EQ(read(kUnknownAgent), unknown);
    }
}

TEST_F(CBackDatabaseTest, RecordsAndListsOfAnAgent) {
    uint32_t status = 0;
    uint32_t end = 0;
    EXPECT_TRUE(dbGetOppStatusW(kFullAgent, status, end));
    EXPECT_EQ(status, 1u);
    EXPECT_EQ(end, 4'000'000'000u);
    tagDbPrivilege privilege;
    EXPECT_TRUE(dbGetPrivilegeW(kFullAgent, privilege));
    EXPECT_EQ(privilege.word2, 0xFFFFFFFFu);
    std::vector<std::wstring> items;
    EXPECT_TRUE(dbGetSpywareWhiteListW(kFullAgent, items));
    EXPECT_THAT(items, ElementsAre(L"one", L"two"));
    tagVEXORCustomBmCfg policies;
    ASSERT_TRUE(dbGetVexorCustomBmCfgW(kFullAgent, policies));
    ASSERT_EQ(policies.policies.size(), 2u);
    EXPECT_EQ(policies.policies[0].policyId, L"p0");
    EXPECT_EQ(policies.policies[0].action, 2u);
    EXPECT_TRUE(policies.policies[0].enable);
    EXPECT_FALSE(policies.policies[1].enable);
    EXPECT_TRUE(dbGetVexorCustomBmCfgW(kBareAgent, policies));
    EXPECT_TRUE(policies.policies.empty());

    EXPECT_FALSE(dbGetOppStatusW(kUnknownAgent, status, end));
    EXPECT_FALSE(dbGetPrivilegeW(kUnknownAgent, privilege));
    EXPECT_FALSE(dbGetVexorCustomBmCfgW(kUnknownAgent, policies));
}

// Values that differ from group to group, in the members that the group stores.
tagScanGroupValues SomeValues(const ScanGroup& group, uint32_t seed) {
    tagScanGroupValues values;
    for (const ScanNumber member : group.numbers.subspan(1)) {
        values.*member = seed++;
    }
    for (const ScanText member : group.texts) {
        values.*member = std::wstring(group.name) + L" \xfc " + std::to_wstring(seed++);
    }
    values.cleanFailedMoveDir.clear();
    return values;
}

TEST_F(CBackDatabaseTest, OtherWrites) {
    uint32_t bits = 0;
    ASSERT_TRUE(dbSetConfFlagW(kFullAgent, 0x10000, 0x1));
    EXPECT_TRUE(dbGetConfFlagW(kFullAgent, bits) && bits == 0x10006);
    ASSERT_TRUE(dbSetAllConfFlgW(0x1, 0x10000));
    EXPECT_TRUE(dbGetConfFlagW(kFullAgent, bits) && bits == 0x7);
    EXPECT_TRUE(dbGetConfFlagW(kBareAgent, bits) && bits == 0x1);

    ASSERT_TRUE(dbSetStatusW(kFullAgent, 0xFFFFFFFF, 12));
    EXPECT_TRUE(dbGetStatusW(kFullAgent, bits) && bits == 0xFFFFFFFF);
    EXPECT_TRUE(dbGetStatusW(kFullAgent, bits, 1) && bits == 12);

    ASSERT_TRUE(dbSetPrivilegeW(kFullAgent, {0xFF, 0x0}, {0xF0, 0x1}));
    tagDbPrivilege privilege;
    ASSERT_TRUE(dbGetPrivilegeW(kFullAgent, privilege));
    EXPECT_EQ(privilege.word1, 0xF3u);
    EXPECT_EQ(privilege.word2, 0xFFFFFFFEu);

    ASSERT_TRUE(dbSetCfwActIdW(kFullAgent, L"policy-9"));
    ASSERT_TRUE(dbSetCfwLogCountW(kFullAgent, -5, {1, 2, 3, 4, 5, 0xFFFFFFFF}, L"20400101120000"));
    ASSERT_TRUE(dbSetSpecialLogW(kFullAgent, 3, L"a text"));
    ASSERT_TRUE(dbGetStatusW(kFullAgent, bits));  // behind them: now they are done
    EXPECT_EQ(Stored("firewall_policy"), L"policy-9");
    EXPECT_EQ(Stored("firewall_number || ':' || firewall_count1 || ':' || firewall_count6"), L"-5:1:4294967295");
    EXPECT_EQ(Stored("firewall_time"), std::to_wstring(ConvertDateTime(L"20400101", L"120000", 0)));
    EXPECT_EQ(Stored("(SELECT log_type || text FROM special_log WHERE special_log.uid = agent.uid)"), L"3a text");
}

TEST_F(CBackDatabaseTest, AllScanSettingsInOneAnswer) {
    tagClnAllScanCfg cfg;
    tagClnAllScanCfgEx lists;
    const wchar_t* caller = L"back_test";
    EXPECT_FALSE(dbGetClnAllScanCfgW(kUnknownAgent, cfg, caller));
    EXPECT_FALSE(dbGetClnAllScanExW(kUnknownAgent, lists, caller));
    EXPECT_TRUE(dbGetClnAllScanCfgW(kBareAgent, cfg, caller));
    EXPECT_FALSE(cfg.hasConfig);

    const std::wstring uid = ThreadAgent(2);
    for (const ScanGroup& group : kScanGroups) {
        ASSERT_TRUE(SetDbScanGroup(group, uid.c_str(), {0x80000000 + group.configFlag, 0xFFFFFFFF, 0},
                                   SomeValues(group, group.configFlag)));
    }
    for (const ScanType type : {ScanType::MS, ScanType::RT, ScanType::PS, ScanType::SN}) {
        ASSERT_TRUE(SetDbScanFlags(type, uid.c_str(), 0x30000000, 0xF0000000));
        ASSERT_TRUE(SetAllDbScanFlags(type, 0x40000000, 0x50000000));
    }
    ASSERT_TRUE(dbGetClnAllScanCfgW(uid.c_str(), cfg, caller));
    ASSERT_TRUE(dbGetClnAllScanExW(uid.c_str(), lists, caller));
    EXPECT_TRUE(cfg.hasConfig && cfg.hasExtra);
    for (const ScanType type : {ScanType::MS, ScanType::RT, ScanType::PS, ScanType::SN}) {
        const auto i = static_cast<std::size_t>(type);
        const ScanGroup& group = FindScanGroup(type, ScanGroupKind::Main);
        tagScanGroupValues expected = SomeValues(group, group.configFlag);
        expected.flags = 0x60000000 + group.configFlag;
        EXPECT_EQ(cfg.scans[i], expected);
        EXPECT_EQ(cfg.spywareFlags[i], 0x80000000 + group.configFlag);
        const ScanGroup& exclusions = FindScanGroup(type, ScanGroupKind::Exclusion);
        EXPECT_EQ(lists.scans[i].excludedExt, SomeValues(exclusions, exclusions.configFlag).excludedExt);
        EXPECT_EQ(lists.scans[i].excludeFileExtList.empty(), type == ScanType::RT);
    }
}

// A write has no answer, yet the next question must see it.
TEST_F(CBackDatabaseTest, NoQuestionOvertakesTheWriteBeforeIt) {
    OnThreads(8, [](unsigned thread) {
        const std::wstring uid = ThreadAgent(thread);
        const std::wstring big(20'000, L'x');
        for (uint32_t i = 1; i <= 25; ++i) {
            tagScanGroupValues values;
            values.extList = std::to_wstring(i) + big;
            values.oleLayer = i;
            EXPECT_TRUE(dbSetMscfW(uid.c_str(), {i, 0xFFFFFFFF, 0}, values));
            tagScanGroupValues read;
            EXPECT_TRUE(dbGetMscfW(uid.c_str(), read));
            EXPECT_EQ(read.flags, i);
            EXPECT_EQ(read.oleLayer, i);
        }
    });
}

}  // namespace
}  // namespace wrb::test
