// Settings that are stored and fetched again, through the command library and the database server.
#include <regex>

#include "Ask.h"
#include "BackEnd.h"
#include "CounterSection.h"
#include "DbAgent.h"
#include "DbPrivilege.h"
#include "ScanUpdateFields.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb::test {
namespace {

// Behind CMDHL_GET_ and CMDHL_SET_, in the order of kScanGroups.
constexpr const wchar_t* kCommands[] = {L"MS_CFG", L"SPY_MS_CFG", L"MS_CFG_EX", L"RT_CFG", L"SPY_RT_CFG", L"RT_CFG_EX",
                                        L"PS_CFG", L"SPY_PS_CFG", L"PS_CFG_EX", L"SN_CFG", L"SPY_SN_CFG", L"SN_CFG_EX"};

std::wstring Fetch(const std::wstring& command, const std::wstring& uid) {
    return Ask((L"CMDHL_GET_" + command).c_str(), uid);
}

class Update : public testing::Test {
  protected:
    void SetUp() override {
        cmdhl_Initialize(L"", L"", nullptr);
        EXPECT_TRUE(
            m_backEnd.WaitForLog("[I] [CMDHL][update_test.exe]cmdhl_Initialize - cmdhl_Initialize: ini home:["));
    }
    void TearDown() override { cmdhl_Finalize(); }

    BackEnd m_backEnd;
};

// Nothing but the right to configure itself, which an update leaves alone, and the folder that the database lacks.
void ExpectFetched(std::size_t group, const std::wstring& uid, const std::vector<UpdateField>& fields) {
    const std::wstring section = Fetch(kCommands[group], uid);
    for (const UpdateField& field : fields) {
        const std::wstring value = field.key == L"AllowCfg"             ? L"0"
                                   : field.key == L"CleanFailedMoveDir" ? (&field - 1)->value
                                                                        : field.value;
        EXPECT_NE(section.find(L"\n" + field.key + L"=" + value + L"\n"), section.npos)
            << std::string(section.begin(), section.end()) << std::string(field.key.begin(), field.key.end());
    }
}

TEST_F(Update, EveryGroupComesBackAsItWasSetForOneAgentAndForAll) {
    const std::wstring one = ThreadAgent(0);
    const std::wstring other = ThreadAgent(1);
    for (const bool variant : {true, false}) {
        std::wstring sections;
        for (std::size_t i = 0; i < kScanGroups.size(); ++i) {
            SCOPED_TRACE(i);
            const ScanGroup& group = kScanGroups[i];
            const std::wstring before = Fetch(kCommands[i], other);
            ASSERT_TRUE(dbSetAllConfFlgW(0, 0xFFFFFFFF));
            const auto fields = UpdateFields(group, variant);
            Tell(L"CMDHL_SET_" + std::wstring(kCommands[i]) + L"\t" + one + L"\t" + JoinFields(fields));
            ExpectFetched(i, one, fields);
            EXPECT_EQ(Fetch(kCommands[i], other), before);
            uint32_t changed = 0;
            EXPECT_TRUE(dbGetConfFlagW(one.c_str(), changed, 0) && changed == group.configFlag) << changed;
            EXPECT_TRUE(dbGetConfFlagW(other.c_str(), changed, 0) && changed == 0) << changed;

            const auto allFields = UpdateFields(group, !variant);
            CCmdProtocol message(JoinFields(allFields).c_str());
            EXPECT_TRUE(SetScanGroup(group, message, nullptr, true, false, 0));
            ExpectFetched(i, one, allFields);
            ExpectFetched(i, other, allFields);
            EXPECT_TRUE(dbGetConfFlagW(other.c_str(), changed, 0) && changed == group.configFlag) << changed;
            sections += Fetch(kCommands[i], one);
        }
        EXPECT_EQ(Fetch(L"ALL_SCAN_CFG", one), sections);
    }
}

TEST_F(Update, AllExclusionsAtOnceAndPrivileges) {
    const std::wstring uid = ThreadAgent(2);
    Tell(L"CMDHL_SET_ALL_CFG_EX\t" + uid + L"\t1\tC:\\a\tb.txt\tlog");
    for (const wchar_t* const command : {L"MS_CFG_EX", L"RT_CFG_EX", L"PS_CFG_EX", L"SN_CFG_EX"}) {
        const std::wstring section = Fetch(command, uid);
        EXPECT_NE(
            section.find(L"ExcludeCallowayProduct=1\nExcludedFolder=C:\\a\nExcludedFile=b.txt\nExcludedExt=log\n"),
            section.npos);
    }
    const std::pair<const wchar_t*, uint32_t> rows[] = {
        {L"MAILSCAN_RT_CFG\t@\t1", 0xFFFFF7FC},
        {L"MAILSCAN_RT_CFG\t@\ttrue", 0xFFFFF3FC},
        {L"CLIENTCFG_SU_STATUS\t@\t1", 0xFFFFF3FD},
        {L"CLIENTCFG_WARNING_SETTING\t@\t1\t1", 0xFFFFFBFF},
        {L"CLIENTCFG_WARNING_SETTING\t@\t0\t1", 0xFFFFFBFD},
        {L"CLIENTCFG_WARNING_SETTING\t@", 0xFFFFF3FD},
        {L"CLIENTCFG_SU_STATUS\t", 0xFFFFF3FD},  // no uid: nothing is stored
    };
    ASSERT_TRUE(dbSetPrivilegeW(uid.c_str(), {0xFFFFF3FC, 0xFFFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}));
    for (const auto& [fields, word1] : rows) {
        const std::wstring message = L"CMDHL_SET_" + std::wstring(fields);
        Tell(std::regex_replace(message, std::wregex(L"@"), uid));
        DbPrivilege privilege;
        EXPECT_TRUE(dbGetPrivilegeW(uid.c_str(), privilege));
        EXPECT_EQ(privilege.word1, word1) << testing::PrintToString(message);
        EXPECT_EQ(privilege.word2, 0xFFFFFFFF);
    }
    CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), CounterAttach::Attached) << error;
    EXPECT_EQ(counters.Slot(30).calls, 1u);
    EXPECT_EQ(counters.Slot(30).failures, 0u);
    EXPECT_EQ(counters.Slot(32).calls, 2u);
    EXPECT_EQ(counters.Slot(32).failures, 1u);
}

}  // namespace
}  // namespace wrb::test
