#include <gtest/gtest.h>

#include "LogFilter.h"
#include "ReceivedLine.h"

namespace wrb {
namespace {

constexpr wchar_t kFields[] = L"1700000000\t4321\t4294967295\t68\tServer\\x.cpp\t57\t[CMDHL][h.exe]text";

TEST(LogLine, FieldsAreTakenInTheirOrder) {
    const auto line = ParseLogLine(kFields);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->seconds, 1700000000);
    EXPECT_EQ(line->process, 4321u);
    EXPECT_EQ(line->thread, 4294967295u);
    EXPECT_EQ(line->level, 68u);
    EXPECT_EQ(line->sourceFile, L"Server\\x.cpp");
    EXPECT_EQ(line->line, 57);
    EXPECT_EQ(line->text, L"[CMDHL][h.exe]text");
}

TEST(LogLine, TheTextMayHoldTabs) {
    EXPECT_EQ(ParseLogLine(std::wstring(kFields) + L"\tand\tmore")->text, L"[CMDHL][h.exe]text\tand\tmore");
}

TEST(LogLine, BrokenMessages) {
    for (const wchar_t* fields : {L"", L"1", L"1\t2\t3\t4\tfile\t6", L"\t\t\t\t\t"}) {
        EXPECT_FALSE(ParseLogLine(fields)) << testing::PrintToString(std::wstring(fields));
    }
    const auto strange = ParseLogLine(L"x\t-1\t99999999999999999999\tD\t\t-5\t");
    ASSERT_TRUE(strange);
    EXPECT_EQ(strange->seconds, 0);
    EXPECT_EQ(strange->line, -5);
    const auto longOne =
        ParseLogLine(L"1\t2\t3\t4\t" + std::wstring(5000, L's') + L"\t6\t" + std::wstring(50000, L't'));
    ASSERT_TRUE(longOne);
    EXPECT_EQ(longOne->sourceFile.size(), 260u);
    EXPECT_EQ(longOne->text.size(), 8191u);
}

TEST(LogLine, AFileLineIsOneLineWhateverThePeerSends) {
    const struct {
        std::wstring text;
        const char* shown;
    } kTexts[] = {
        {L"plain \\ path", "plain \\ path"},
        {L"a\r\nb\tc", "a\\r\\nb\\tc"},
        {std::wstring(L"nul\0end", 7), "nul\\u0000end"},
        {L"\x1b[2J", "\\u001B[2J"},
        {L"\x85\x2028\x2029", "\\u0085\\u2028\\u2029"},
        {L"\x202e\x2066\xfeff", "\\u202E\\u2066\\uFEFF"},
        {L"\xfc\x4e2d\xd83d\xde00", "\xC3\xBC\xE4\xB8\xAD\xF0\x9F\x98\x80"},
    };
    for (const auto& [text, shown] : kTexts) {
        tagReceivedLine line{
            .seconds = 0, .process = 0x11d7, .thread = 5, .level = 'W', .sourceFile = L"f\n", .line = 3};
        line.text = text;
        const std::string formatted = FormatLogLine(line);
        EXPECT_TRUE(formatted.ends_with(std::string(" [11d7 : 0005] [W] ") + shown + " - [f\\n(3)]\r\n")) << formatted;
    }
}

TEST(LogLine, TimeIsLocalAndNeverFails) {
    std::tm local{};
    const std::time_t seconds = 1700000000;
    localtime_s(&local, &seconds);
    char expected[32];
    std::strftime(expected, sizeof expected, "%Y %m/%d %H:%M:%S ", &local);
    EXPECT_TRUE(FormatLogLine({.seconds = seconds}).starts_with(expected));
    EXPECT_TRUE(FormatLogLine({.seconds = INT32_MIN}).starts_with("1970 01/01 00:00:00 "));
}

TEST(LogLine, ClassesOfLevels) {
    const struct {
        uint32_t level;
        const char* shown;
    } kLevels[] = {{0, "[F]"},   {3, "[E]"},   {5, "[W]"},   {7, "[I]"},     {8, "[D]"},
                   {'D', "[D]"}, {'N', "[N]"}, {255, "[D]"}, {256, "[256]"}, {4294967295, "[4294967295]"}};
    for (const auto& [level, shown] : kLevels) {
        EXPECT_NE(FormatLogLine({.level = level}).find(shown), std::string::npos) << level;
    }
}

TEST(LogLevel, EachNameAdmitsItsClassAndTheWeightierOnes) {
    constexpr std::wstring_view kOrder = L"FEWID";
    for (std::size_t wanted = 0; wanted < kOrder.size(); ++wanted) {
        const uint32_t word = ParseLogLevel(kOrder.substr(wanted, 1)).value();
        for (std::size_t i = 0; i < kOrder.size(); ++i) {
            EXPECT_EQ(LogFilterAdmits(word, kOrder[i]), i <= wanted) << wanted << " " << i;
        }
        EXPECT_TRUE(LogFilterAdmits(word, 'N'));
    }
    EXPECT_TRUE(LogFilterAdmits(*ParseLogLevel(L"all"), 200));
    EXPECT_FALSE(LogFilterAdmits(*ParseLogLevel(L"none"), 'N'));
    for (const wchar_t* wrong : {L"", L"d", L"DD", L"5", L" W", L"W\t"}) {
        EXPECT_FALSE(ParseLogLevel(wrong)) << testing::PrintToString(std::wstring(wrong));
    }
}

}  // namespace
}  // namespace wrb
