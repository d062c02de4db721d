#include "CmdProtocol.h"

#include <gtest/gtest.h>

namespace {

TEST(CmdProtocol, FieldsPastTheEndAreEmpty) {
    CCmdProtocol message(L"a\t");
    std::wstring field;
    message >> field >> field;
    EXPECT_TRUE(message.AtEnd());
    uint32_t number = 1;
    field = L"left over";
    message >> field >> number;
    EXPECT_EQ(field, L"");
    EXPECT_EQ(number, 0u);
}

TEST(CmdProtocol, TheByteCountIsTheLength) {
    std::wstring field;
    CCmdProtocol(L"abcdef", 6) >> field;
    EXPECT_EQ(field, L"abc");
    CCmdProtocol(L"abcdef", 7) >> field;  // half a character is none
    EXPECT_EQ(field, L"abc");
    for (const int64_t none : {int64_t{0}, int64_t{-2}, int64_t{-3}, int64_t{-100}, INT64_MIN}) {
        CCmdProtocol(L"abcdef", none) >> field;
        EXPECT_EQ(field, L"") << none;
    }
    CCmdProtocol(L"a\0b\tc", 10) >> field;  // a zero is a character like any other
    EXPECT_EQ(field, std::wstring(L"a\0b", 3));
}

TEST(CmdProtocol, NumbersAreTheBitPatternOfASignedDecimal) {
    const std::pair<const wchar_t*, uint32_t> cases[] = {
        {L"-1", 0xFFFFFFFF},
        {L"4294967295", 2147483647},
        {L"-2147483649", 0x80000000},
        {L"12abc", 12},
        {L"", 0},
        {L"0000000000000000012", 12},       // 19 characters
        {L"00000000000000000012", 1},       // 20: the last is not read
        {L"0000000000000000000000012", 0},  // 25
    };
    for (const auto& [field, expected] : cases) {
        uint32_t number = 1;
        CCmdProtocol(field) >> number;
        EXPECT_EQ(number, expected) << testing::PrintToString(field);
    }
}

TEST(CmdProtocol, BuildsFieldsBetweenTabs) {
    CCmdProtocol message;
    EXPECT_EQ(message.Text(), L"");
    message << L"a" << 5u << L"";
    EXPECT_EQ(message.Text(), L"a\t5\t");
    message << INT32_MIN << UINT32_MAX << std::wstring(L"b");
    message.Append(L"cut here", 3).Append(nullptr, -1).Append(nullptr, 5).Append(L"none", -2);
    EXPECT_EQ(message.Text(), L"a\t5\t\t-2147483648\t4294967295\tb\tcut\t\t\t");
}

}  // namespace
