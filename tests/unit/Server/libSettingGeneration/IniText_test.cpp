#include "IniText.h"
#include "IniList.h"

#include <gtest/gtest.h>

#include "CapturedLog.h"

namespace {

// Every other line is seen in the sections.
TEST(IniText, ANameOfTheFullLengthHasNoLineEnd) {
    std::wstring out;
    AppendIniSection(out, std::wstring(1021, L's'));
    EXPECT_EQ(out, L"[" + std::wstring(1021, L's') + L"]");
}

TEST(IniList, ItemsThenTheirCount) {
    const auto protect = [](std::wstring_view item) { return L"!" + std::wstring(item); };
    const std::wstring longest(1535, L'x');
    std::wstring most;  // and its keys, whose numbers have three digits at least
    std::wstring keys;
    for (int i = 0; i < 65'535; ++i) {
        most += L"a|";
        keys += (i < 1000 ? L"I" + std::to_wstring(1000 + i).substr(1) : L"I" + std::to_wstring(i)) + L"=!a\n";
    }
    const struct {
        std::wstring list;
        std::wstring expected;
        std::vector<CapturedLine> lines;
    } rows[] = {
        {L"", L"N=0\n", {}},
        {L"|a", L"N=0\n", {}},
        {L"a|b|", L"I000=!a\nI001=!b\nN=2\n", {}},
        {L"a||c", L"I000=!a\nN=1\n", {}},
        {longest, L"I000=!" + longest + L"\nN=1\n", {}},
        {longest + L"y|" + longest + L"y",
         L"I000=!" + longest + L"\nI001=!" + longest + L"\nN=2\n",
         {{'W', L"N - 2 items are too long and are cut at 1536 characters"}}},
        {most + L"|b", keys + L"N=65535\n", {}},
        {most + L"b", keys + L"N=65535\n", {{'W', L"N - items beyond the first 65535 are left out"}}},
    };
    for (const auto& row : rows) {
        TakeCapturedLog();
        std::wstring out;
        wrb::AppendProtectedIniList(out, {L"N", L"I%03d"}, row.list, protect);
        EXPECT_EQ(out, row.expected);
        EXPECT_EQ(TakeCapturedLog(), row.lines);
    }
}

}  // namespace
