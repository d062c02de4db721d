// What comes from the scan INI: the server-wide settings and the completion of custom actions.
#include <gtest/gtest.h>

#include "CustomAction.h"
#include "ExpectedScanSections.h"
#include "Fixtures.h"
#include "cmdhm_ScanCfg.h"

namespace {

using wrb::test::ExpectedScanSections;
using wrb::test::ExpectedSection;

std::wstring Answer(const ExpectedSection& section, const std::wstring& iniText) {
    const BoundIni ini(iniText);
    std::wstring out = L"old";
    EXPECT_TRUE(wrb::GetAndExportScanGroup(section.Group(), out, L"", true));
    return out;
}

TEST(ScanCfgIni, KeysHaveTheirDefaultsWithoutAFile) {
    for (const ExpectedSection& section : ExpectedScanSections()) {
        std::wstring text = L"[" + section.name + L"]\n";
        for (const wrb::test::ExpectedKey& key : section.keys) {
            text += key.key + L"=" + key.iniDefault + L"\n";
        }
        EXPECT_EQ(Answer(section, L""), text);
    }
}

TEST(ScanCfgIni, NumbersOutOfTheOrdinary) {
    const struct {
        std::size_t section;
        const wchar_t* key;
        const wchar_t* value;
        const wchar_t* shown;
    } rows[] = {
        {0, L"AllowCfg", L"2", L"1"},   {0, L"AllowCfg", L"-1", L"0"},
        {0, L"AllowCfg", L"yes", L"0"}, {0, L"Enable", L"", L"1"},
        {0, L"ScanSpeed", L"1", L"1"},  {0, L"ScanSpeed", L"3", L"0"},
        {9, L"ActionType", L"0", L"0"}, {9, L"ActionType", L"5", L"1"},
        {10, L"ScanType", L"7", L"2"},  {0, L"EnableAggressiveClean", L"1", L"1"},
    };
    for (const auto& row : rows) {
        const ExpectedSection& section = ExpectedScanSections()[row.section];
        const std::wstring key = std::wstring(row.key) + L"=";
        const std::wstring answer = Answer(section, L"[" + section.name + L"]\n" + key + row.value + L"\n");
        EXPECT_NE(answer.find(L"\n" + key + row.shown + L"\n"), answer.npos) << row.key << row.value;
    }
}

TEST(ScanCfgIni, TheMainWordTakesTheSwitchOfTheExclusionSection) {
    const BoundIni ini(L"[Prescheduled Scan Configuration Ex]\nExcludeCallowayProduct=0\n");
    wrb::ScanGroupValues values;
    TakeOwnText();
    cmdhm_GetPSCfg(values, L"", false);
    EXPECT_EQ(values.flags, 0x3100e63d);
    EXPECT_EQ(TakeOwnText(),
              L"get ps:[ini][3100e63d][20][3][4][1][12][0][1][1][7][1][1]"
              L"[.EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386][\\temp][\\temp][Universe-5-4]\n");
}

TEST(CustomAction, TypesWithoutAnItemGetOne) {
    const std::wstring section = L"[INI_MAJOR_VIRUS_TYPE_SECTION]\n";
    const std::wstring types =
        section +
        L"Count=5\nName_000=Joke\n1st_Act_000=1\n2nd_Act_000=2\n"
        L"Name_001=CVE_Exploit\n1st_Act_001=3\n2nd_Act_001=4\nName_002=\n1st_Act_002=9\n2nd_Act_002=9\n"
        L"Name_003=Packer\n1st_Act_003=5\n2nd_Act_003=\nName_004=Idle\n2nd_Act_004=7\n1st_Act_Universe=5-4\n";
    const std::tuple<std::wstring, std::wstring, const wchar_t*> rows[] = {
        // INI, text, completed text
        {types, L"", L"Joke-1-2;Packer-5;Universe-5-4"},
        {types, L"Universe-1-1", L"Universe-1-1;Joke-1-2;Packer-5"},
        {types, L"Packer-8-8;", L"Packer-8-8;Joke-1-2;Universe-5-4"},
        {types, L"Jokes-1-1", L"Jokes-1-1;Joke-1-2;Packer-5;Universe-5-4"},
        {L"", L"A-1-1;;", L"A-1-1;;"},
        {section + L"Count=-1\nName_000=B\n1st_Act_000=1\n", L"A-1-1;;", L"A-1-1;;"},
        {section + L"Count=1001\nName_999=Last\n1st_Act_999=1\nName_1000=Beyond\n1st_Act_1000=1\nUniverse=Others\n"
                   L"1st_Act_Universe=3\n",
         L"A-1-1", L"A-1-1;Last-1;Others-3"},
    };
    for (auto [iniText, text, completed] : rows) {
        const BoundIni ini(iniText);
        wrb::CompleteCustomAction(ScanIniCache(), text);
        EXPECT_EQ(text, completed);
    }
}

}  // namespace
