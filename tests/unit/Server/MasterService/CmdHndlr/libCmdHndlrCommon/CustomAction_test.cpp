#include "CustomAction.h"

#include <gtest/gtest.h>

#include "IniFile.h"

namespace {

constexpr const wchar_t* kTypes =
    L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=5\nName_000=Joke\n1st_Act_000=1\n2nd_Act_000=2\n"
    L"Name_001=CVE_Exploit\n1st_Act_001=3\n2nd_Act_001=4\nName_002=\n1st_Act_002=9\n2nd_Act_002=9\n"
    L"Name_003=Packer\n1st_Act_003=5\n2nd_Act_003=\nName_004=Idle\n2nd_Act_004=7\n1st_Act_Universe=5-4\n";

std::wstring Complete(const std::wstring& iniText, const wchar_t* customAction) {
    const CIniFile file(iniText);
    CINICache ini;
    ini.init(file.Path().c_str(), 6);
    std::wstring text = customAction;
    wrb::CompleteCustomAction(ini, text);
    return text;
}

TEST(CustomAction, TypesWithoutAnItemGetOne) {
    const struct {
        const wchar_t* text;
        const wchar_t* completed;
    } rows[] = {
        {L"", L"Joke-1-2;Packer-5;Universe-5-4"},
        {L"Universe-1-1", L"Universe-1-1;Joke-1-2;Packer-5"},
        {L"Packer-8-8;", L"Packer-8-8;Joke-1-2;Universe-5-4"},
        {L"CVE_Exploit-6-6;Joke-0-0", L"CVE_Exploit-6-6;Joke-0-0;Packer-5;Universe-5-4"},
        {L"Jokes-1-1", L"Jokes-1-1;Joke-1-2;Packer-5;Universe-5-4"},
        {L"Universe;Joke;Packer", L"Universe;Joke;Packer"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Complete(kTypes, row.text), row.completed);
    }
}

TEST(CustomAction, WithoutTypesTheTextStaysAsItIs) {
    for (const wchar_t* ini :
         {L"", L"[Other]\nCount=3\n", L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=0\n1st_Act_Universe=5\n",
          L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=many\nName_000=A\n1st_Act_000=1\n"}) {
        EXPECT_EQ(Complete(ini, L"A-1-1;;"), L"A-1-1;;");
    }
}

TEST(CustomAction, ACountBeyondReasonIsBounded) {
    const std::wstring ini =
        L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=-1\nName_999=Last\n1st_Act_999=1\nName_1000=Beyond\n1st_Act_1000=1\n"
        L"Universe=Others\n1st_Act_Universe=3\n";
    EXPECT_EQ(Complete(ini, L"A-1-1"), L"A-1-1;Last-1;Others-3");
}

}  // namespace
