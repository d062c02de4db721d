#include <gtest/gtest.h>

#include "ReceivedLine.h"

namespace wrb {
namespace {

// The line in the file without its date and time.
std::string Shown(const tagReceivedLine& line) {
    return FormatLogLine(line).substr(sizeof "1970 01/01 00:00:00" - 1);
}

TEST(LogLine, FieldsOfEveryMessage) {
    const std::string letters(9000, 'x');
    const std::wstring wide(9000, L'x');
    const struct {
        std::wstring fields;
        std::string shown;  // empty: refused
    } kCases[] = {
        {L"1700000000\t4321\t4294967295\t68\tServer\\x.cpp\t57\t[CMDHL][h.exe]text\tand\tmore",
         " [10e1 : ffffffff] [D] [CMDHL][h.exe]text\\tand\\tmore - [Server\\x.cpp(57)]\r\n"},
        {L"x\t-1\t99999999999999999999\tD\t\t-5\t", " [ffffffff : ffffffff] [F]  - [(-5)]\r\n"},
        {L"1\t2\t3\t4\t" + wide + L"\t6\t" + wide,
         " [0002 : 0003] [E] " + letters.substr(0, 8191) + " - [" + letters.substr(0, 260) + "(6)]\r\n"},
        {L"", ""},
        {L"1\t2\t3\t4\tfile\t6", ""},
        {L"\t\t\t\t\t", ""},
    };
    for (const auto& [fields, shown] : kCases) {
        const auto line = ParseLogLine(fields);
        EXPECT_EQ(line ? Shown(*line) : "", shown) << fields.size();
    }
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
        EXPECT_EQ(Shown({.level = 'W', .sourceFile = text, .line = 3, .text = text}),
                  std::string(" [0000 : 0000] [W] ") + shown + " - [" + shown + "(3)]\r\n");
    }
}

TEST(LogLine, TimeIsLocalAndNeverFails) {
    const std::time_t seconds = 1700000000;
    char expected[32];
    std::strftime(expected, sizeof expected, "%Y %m/%d %H:%M:%S ", std::localtime(&seconds));
    EXPECT_TRUE(FormatLogLine({.seconds = seconds}).starts_with(expected));
    EXPECT_TRUE(FormatLogLine({.seconds = INT32_MIN}).starts_with("1970 01/01 00:00:00 "));
}

}  // namespace
}  // namespace wrb
