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

TEST(Text, NumbersAreReadAsFarAsTheyGoAndClamped) {
    const struct {
        const wchar_t* text;
        int64_t number;
    } cases[] = {
        {L"", 0},
        {L"-", 0},
        {L"+-1", 0},
        {L"\t\r\n 42 ", 42},
        {L"12.9", 12},
        {L"2147483648", 2147483648},
        {L"-2147483649", -2147483649},
        {L"9223372036854775807", INT64_MAX},
        {L"9223372036854775808", INT64_MAX},
        {L"-9223372036854775809", INT64_MIN},
        {L"99999999999999999999999999", INT64_MAX},
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
