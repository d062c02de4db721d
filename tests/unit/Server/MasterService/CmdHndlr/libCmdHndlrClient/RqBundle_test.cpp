// The handlers of the setting-bundle requests: which texts each logs, also for a reply that nobody takes.
#include "Ask.h"
#include "CounterSection.h"
#include "FakeLogService.h"

namespace {

constexpr struct {
    const wchar_t* command;
    uint32_t slot;
    const wchar_t* prefix;  // of the handler's lines
    const wchar_t* blank;   // behind the line of a failed reply
    uint32_t failedLevel;
} kHandlers[] = {
    {L"CMDHL_GET_WTP_SETTING", 4, L"cmdhl_GetWtpSetting: ", L" ", 8},
    {L"CMDHL_GET_NCIE_SETTING", 41, L"cmdhl_GetNCIESetting - ", L"", 'E'},
    {L"CMDHL_GET_SAMPLE_SUBMISSION_SETTING", 42, L"cmdhl_GetSampleSubmissionSetting - ", L"", 'E'},
    {L"CMDHL_GET_SABLEX_SETTING", 43, L"cmdhl_GetSablexSetting - ", L"", 'E'},
    {L"CMDHL_GET_FA_RESTORE_SETTING", 68, L"cmdhl_GetFARestoreSetting - cmdhl_GetFARestoreSetting: ", L"", 'E'},
};

// No database server runs.
TEST(RqBundle, LinesOfTheHandlers) {
    wrb::test::CFakeLogService log;
    cmdhl_Initialize(L"", L"", nullptr);
    wrb::CCounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), wrb::CounterAttach::Attached) << error;
    for (const auto& row : kHandlers) {
        SCOPED_TRACE(row.slot);
        log.TakeTexts();
        EXPECT_EQ(Ask(row.command, L"a-uid"), L"");
        const auto texts = log.TakeTexts();
        EXPECT_EQ(texts.front(), std::wstring(row.prefix) + L"uid:[a-uid]");
        EXPECT_EQ(texts.back(), std::wstring(row.prefix) + L"output:[]");
        EXPECT_EQ(counters.Slot(row.slot).calls, 1u);

        const std::wstring message = std::wstring(row.command) + L"\tnobody\ta-uid";
        EXPECT_EQ(cmdhl_Process(message.data(), message.size() * sizeof(wchar_t)), 1u);
        const auto lines = log.TakeLines();
        EXPECT_TRUE(
            lines.back().text.ends_with(L"]" + std::wstring(row.prefix) + L"cmdhl_OutputCommand failed." + row.blank));
        EXPECT_EQ(lines.back().level, row.failedLevel);
    }
    cmdhl_Finalize();
}

}  // namespace
