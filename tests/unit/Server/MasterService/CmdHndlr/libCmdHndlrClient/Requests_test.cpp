// The handlers that answer with an agent's settings, over real pipes and the real counter block: which lines each logs,
// also for a reply that nobody takes, what it answers, and where it is counted.
#include "Ask.h"
#include "CapturedLog.h"
#include "CounterSection.h"

namespace {

constexpr struct {
    const wchar_t* command;  // behind "CMDHL_GET_"
    uint32_t slot;
    const wchar_t* prefix;        // of the handler's lines
    const wchar_t* section;       // the one of the server-wide answer; empty: there is none
    const wchar_t* failed = L"";  // the line of a failed reply, behind the prefix; empty: only the pipe's
    uint32_t failedLevel = 'E';
} kHandlers[] = {
    {L"ALL_SCAN_CFG", 3, L"cmdhl_GetAllScanCfg: ", L""},
    {L"MS_CFG", 5, L"cmdhl_GetMSCfg: ", L"[Manual Scan Configuration]"},
    {L"MS_CFG_EX", 6, L"cmdhl_GetMSCfgEx: ", L"[Manual Scan Configuration Ex]"},
    {L"SPY_MS_CFG", 7, L"[cmdhl_GetSpyMSCfg] ", L"[Spyware Manual Scan Configuration]"},
    {L"RT_CFG", 8, L"cmdhl_GetRTCfg: ", L"[Real Time Scan Configuration]"},
    {L"RT_CFG_EX", 9, L"cmdhl_GetRTCfgEx: ", L"[Real Time Scan Configuration Ex]"},
    {L"SPY_RT_CFG", 10, L"[cmdhl_GetSpyRTCfg] ", L"[Spyware Real Time Scan Configuration]"},
    {L"PS_CFG", 11, L"cmdhl_GetPSCfg: ", L"[Prescheduled Scan Configuration]"},
    {L"PS_CFG_EX", 12, L"cmdhl_GetPSCfgEx: ", L"[Prescheduled Scan Configuration Ex]"},
    {L"SPY_PS_CFG", 13, L"[cmdhl_GetSpyPSCfg] ", L"[Spyware Prescheduled Scan Configuration]"},
    {L"SN_CFG", 14, L"cmdhl_GetSNCfg: ", L"[Scan Now Configuration]"},
    {L"SN_CFG_EX", 15, L"cmdhl_GetSNCfgEx: ", L"[Scan Now Configuration Ex]"},
    {L"SPY_SN_CFG", 16, L"[cmdhl_GetSpySNCfg] ", L"[Spyware Scan Now Configuration]"},
    {L"SPY_RESTORE_LIST", 17, L"[cmdhl_GetSpyRestoreList] ", L""},
    {L"WTP_SETTING", 4, L"cmdhl_GetWtpSetting: ", L"", L"cmdhl_OutputCommand failed. ", 8},
    {L"NCIE_SETTING", 41, L"cmdhl_GetNCIESetting - ", L"", L"cmdhl_OutputCommand failed."},
    {L"SAMPLE_SUBMISSION_SETTING", 42, L"cmdhl_GetSampleSubmissionSetting - ", L"", L"cmdhl_OutputCommand failed."},
    {L"SABLEX_SETTING", 43, L"cmdhl_GetSablexSetting - ", L"", L"cmdhl_OutputCommand failed."},
    {L"FA_RESTORE_SETTING", 68, L"cmdhl_GetFARestoreSetting - cmdhl_GetFARestoreSetting: ", L"",
     L"cmdhl_OutputCommand failed."},
};

TEST(Requests, EachLogsAnswersAndCounts) {
    cmdhl_Initialize(L"", L"", nullptr);
    wrb::CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), wrb::CounterAttach::Attached) << error;
    for (const auto& row : kHandlers) {
        SCOPED_TRACE(row.slot);
        const bool hasSection = *row.section != L'\0';
        const std::wstring command = L"CMDHL_GET_" + std::wstring(row.command);
        const std::wstring prefix = row.prefix;
        TakeCapturedTexts();
        const std::wstring answer = Ask(command.c_str(), L"\tmore");
        EXPECT_EQ(answer.substr(0, answer.find(L'\n')), row.section);
        EXPECT_EQ(answer.find(L'[', 1), answer.npos) << "one section";
        EXPECT_EQ(answer.ends_with(L'\n'), hasSection);
        auto lines = TakeCapturedLog();
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines.front().text, prefix + L"uid:[]");
        EXPECT_EQ(lines.back().text, prefix + L"output:[" + answer + L"]");
        EXPECT_EQ(lines.front().level + lines.back().level, 8u + 8u);
        EXPECT_TRUE(lines.front().sourceFile.find(L"cmdhl_Rq") != std::wstring::npos && lines.front().line != 0);
        EXPECT_EQ(counters.Slot(row.slot).calls, 1u);

        Tell(command + L"\tnobody\t100%s\tmore");
        lines = TakeCapturedLog();
        EXPECT_EQ(lines.front().text, prefix + L"uid:[100%s]");
        if (*row.failed != L'\0') {
            EXPECT_EQ(lines.back().text, prefix + row.failed);
            EXPECT_EQ(lines.back().level, row.failedLevel);
            lines.pop_back();
        }
        EXPECT_EQ(lines.back().text, L"init pipe client [nobody] failed! err=[2]");
        EXPECT_EQ(lines.back().level, 5u);
        EXPECT_EQ(lines.at(lines.size() - 2).text, prefix + L"output:[]") << "of an agent, without a database server";
    }
    EXPECT_EQ(counters.CallsInProgress(), 0);
    cmdhl_Finalize();
}

}  // namespace
