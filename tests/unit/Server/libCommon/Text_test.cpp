#include "Text.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(Text, FormattingIsCutToTheBufferAndTerminated) {
    for (const std::size_t length : {0u, 1u, 6u, 7u, 8u, 100u}) {
        wchar_t buffer[] = L"########|";  // 8 characters to use, then a mark
        const std::wstring text(length, L'x');
        const std::size_t written = wrb::FormatInto(buffer, 8, L"%s", text.c_str());
        EXPECT_EQ(written, std::min<std::size_t>(length, 7));
        EXPECT_EQ(std::wstring(buffer), text.substr(0, 7));
        EXPECT_EQ(buffer[8], L'|');
    }
}

std::size_t FormatNarrow(char* buffer, std::size_t capacity, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = wrb::FormatIntoV(buffer, capacity, format, arguments);
    va_end(arguments);
    return length;
}

// The C locale has no narrow form of the character: printf gives up in the middle.
TEST(Text, FormattingThatGivesUpShowsNothingOfWhatWasThere) {
    for (const char* format : {"%ls", "ab%ls", "ab%lscd", "abcdefgh%ls"}) {
        char buffer[] = "########|";  // 8 characters to use, then a mark
        const std::size_t written = FormatNarrow(buffer, 8, format, L"\u6F22");
        EXPECT_EQ(written, std::string(buffer).size()) << format;
        EXPECT_EQ(std::string(buffer).find('#'), std::string::npos) << format << " -> " << buffer;
        EXPECT_EQ(buffer[8], '|');
    }
}

TEST(Text, FormattingReadsWideTextWithPercentS) {
    EXPECT_EQ(wrb::FormatWide(L"%s|%S|%d|%04x|%%", L"w\u00e4", "narrow", -3, 0xbeu), L"w\u00e4|narrow|-3|00be|%");
    EXPECT_EQ(wrb::FormatWide(L"%s", std::wstring(5'000, L'x').c_str()).size(), 4095u);
}

TEST(Text, NumbersAreReadAsFarAsTheyGoAndClamped) {
    const struct {
        const wchar_t* text;
        int64_t number;
    } cases[] = {
        {L"", 0},
        {L"-", 0},
        {L"+", 0},
        {L"+-1", 0},
        {L"0x10", 0},
        {L"007", 7},
        {L"\t\r\n 42 ", 42},
        {L"- 1", 0},
        {L"12.9", 12},
        {L"2147483647", INT32_MAX},
        {L"2147483648", 2147483648},
        {L"-2147483648", INT32_MIN},
        {L"-2147483649", -2147483649},
        {L"9223372036854775806", INT64_MAX - 1},
        {L"9223372036854775807", INT64_MAX},
        {L"9223372036854775808", INT64_MAX},
        {L"-9223372036854775808", INT64_MIN},
        {L"-9223372036854775809", INT64_MIN},
        {L"99999999999999999999999999", INT64_MAX},
        {L"-99999999999999999999999999", INT64_MIN},
        {L"\u0661", 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(wrb::ParseInt64(row.text), row.number) << testing::PrintToString(row.text);
        EXPECT_EQ(wrb::ParseInt32(row.text), std::clamp<int64_t>(row.number, INT32_MIN, INT32_MAX))
            << testing::PrintToString(row.text);
    }
}

TEST(Text, Utf8ThereAndBack) {
    for (const wchar_t* text : {L"", L"plain", L"\u00e9\u20ac", L"\xd83d\xde00", L"a\tb"}) {
        EXPECT_EQ(wrb::Utf8ToWide(wrb::WideToUtf8(text)), text);
    }
    EXPECT_EQ(wrb::WideToUtf8(L"\u20ac"), "\xe2\x82\xac");
    EXPECT_EQ(wrb::WideToUtf8(L"\xd83d"), "\xef\xbf\xbd") << "half a pair";
    EXPECT_NE(wrb::Utf8ToWide("\xff").find(L'\xfffd'), std::wstring::npos);
    EXPECT_EQ(wrb::AnsiToWide(wrb::WideToAnsi(L"plain")), L"plain");
}

}  // namespace
