// The handlers of the scan-configuration requests: which text each logs, what it answers, and where it is counted.
#include "Ask.h"
#include "CounterSection.h"
#include "FakeLogService.h"

namespace {

constexpr struct {
    const wchar_t* command;
    uint32_t slot;
    const wchar_t* prefix;   // of both log lines
    const wchar_t* section;  // first line of the server-wide answer; empty: there is none
} kHandlers[] = {
    {L"CMDHL_GET_ALL_SCAN_CFG", 3, L"cmdhl_GetAllScanCfg:", L""},
    {L"CMDHL_GET_MS_CFG", 5, L"cmdhl_GetMSCfg:", L"[Manual Scan Configuration]"},
    {L"CMDHL_GET_MS_CFG_EX", 6, L"cmdhl_GetMSCfgEx:", L"[Manual Scan Configuration Ex]"},
    {L"CMDHL_GET_SPY_MS_CFG", 7, L"[cmdhl_GetSpyMSCfg]", L"[Spyware Manual Scan Configuration]"},
    {L"CMDHL_GET_RT_CFG", 8, L"cmdhl_GetRTCfg:", L"[Real Time Scan Configuration]"},
    {L"CMDHL_GET_RT_CFG_EX", 9, L"cmdhl_GetRTCfgEx:", L"[Real Time Scan Configuration Ex]"},
    {L"CMDHL_GET_SPY_RT_CFG", 10, L"[cmdhl_GetSpyRTCfg]", L"[Spyware Real Time Scan Configuration]"},
    {L"CMDHL_GET_PS_CFG", 11, L"cmdhl_GetPSCfg:", L"[Prescheduled Scan Configuration]"},
    {L"CMDHL_GET_PS_CFG_EX", 12, L"cmdhl_GetPSCfgEx:", L"[Prescheduled Scan Configuration Ex]"},
    {L"CMDHL_GET_SPY_PS_CFG", 13, L"[cmdhl_GetSpyPSCfg]", L"[Spyware Prescheduled Scan Configuration]"},
    {L"CMDHL_GET_SN_CFG", 14, L"cmdhl_GetSNCfg:", L"[Scan Now Configuration]"},
    {L"CMDHL_GET_SN_CFG_EX", 15, L"cmdhl_GetSNCfgEx:", L"[Scan Now Configuration Ex]"},
    {L"CMDHL_GET_SPY_SN_CFG", 16, L"[cmdhl_GetSpySNCfg]", L"[Spyware Scan Now Configuration]"},
    {L"CMDHL_GET_SPY_RESTORE_LIST", 17, L"[cmdhl_GetSpyRestoreList]", L""},
};

class RqCfg : public testing::Test {
  protected:
    void SetUp() override {
        cmdhl_Initialize(L"", L"", nullptr);
        uint32_t error = 0;
        ASSERT_EQ(m_counters.Attach(error), wrb::CounterAttach::Attached) << error;
    }
    void TearDown() override { cmdhl_Finalize(); }

    wrb::test::CFakeLogService m_log;
    wrb::CCounterReader m_counters;
};

// No database server runs: the agent gets an empty answer, and the log shows what was asked and answered.
TEST_F(RqCfg, WithoutADatabaseServerTheAnswerIsEmpty) {
    for (const auto& row : kHandlers) {
        SCOPED_TRACE(row.slot);
        m_log.TakeTexts();
        EXPECT_EQ(Ask(row.command, L"0a1b2c3d-uid"), L"");
        const auto lines = m_log.TakeTexts();
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines.front(), std::wstring(row.prefix) + L" uid:[0a1b2c3d-uid]");
        EXPECT_EQ(lines.back(), std::wstring(row.prefix) + L" output:[]");
        EXPECT_EQ(m_counters.Slot(row.slot).calls, 1u);
    }
    EXPECT_EQ(m_counters.CallsInProgress(), 0);
}

TEST_F(RqCfg, AnEmptyUidAsksForTheServerWideSection) {
    for (const auto& row : kHandlers) {
        if (*row.section == L'\0') {
            continue;
        }
        SCOPED_TRACE(row.slot);
        const std::wstring answer = Ask(row.command, L"");
        EXPECT_EQ(answer.substr(0, answer.find(L'\n')), row.section);
        EXPECT_EQ(answer.find(L'[', 1), answer.npos) << "one section";
        EXPECT_EQ(answer.back(), L'\n');
    }
}

}  // namespace
