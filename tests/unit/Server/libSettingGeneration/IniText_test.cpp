#include "IniText.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(IniText, HelpersAppendOneLineEach) {
    std::wstring out = L"before\n";
    AppendIniSection(out, L"Any Section");
    AppendIniString(out, L"Text", L" as = it; stands ");
    AppendIniString(out, L"Empty", L"");
    AppendIniBool(out, L"On", true);
    AppendIniBool(out, L"Off", false);
    for (const int32_t number : {0, 7, -1, INT_MAX, INT_MIN}) {
        AppendIniInt(out, L"Number", number);
    }
    EXPECT_EQ(out,
              L"before\n[Any Section]\nText= as = it; stands \nEmpty=\nOn=1\nOff=0\nNumber=0\nNumber=7\nNumber=-1\n"
              L"Number=2147483647\nNumber=-2147483648\n");
}

TEST(IniText, ALongSectionLineIsCutAt1023Characters) {
    for (const std::size_t length : {1020, 1021, 1022, 1023, 5000}) {
        std::wstring out;
        AppendIniSection(out, std::wstring(length, L's'));
        EXPECT_EQ(out, (L"[" + std::wstring(length, L's') + L"]\n").substr(0, 1023)) << length;
    }
}

std::wstring Letters(std::size_t length) {
    std::wstring text;
    for (std::size_t i = 0; i < length; ++i) {
        text += static_cast<wchar_t>(L'a' + i % 26);
    }
    return text;
}

// Lengths around every size at which lines are copied or handed on differently, at every fill of the writer's buffer.
TEST(IniText, LinesOfEveryLengthStayWholeAndInOrder) {
    std::wstring out;
    std::wstring expected;
    wrb::CIniWriter writer(out);
    for (std::size_t length = 0; length < 2200; length += length < 70 ? 1 : 37) {
        const std::wstring key = Letters(length % 40);
        const std::wstring head = Letters(length);
        const std::wstring tail = Letters(length / 3);
        writer.Line(key, head, tail);
        expected.append(key).append(L"=").append(head).append(tail).append(L"\n");
    }
    writer.Finish();
    EXPECT_EQ(out, expected);
}

}  // namespace
