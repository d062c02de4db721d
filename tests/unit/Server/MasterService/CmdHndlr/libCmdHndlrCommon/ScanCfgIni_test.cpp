// The server-wide settings from real INI files.
#include <gtest/gtest.h>

#include <cwctype>

#include "CapturedLog.h"
#include "ExpectedScanSections.h"
#include "IniFile.h"
#include "ScanCfgIni.h"
#include "cmdhm_ScanCfg.h"

namespace {

using wrb::ScanGroupKind;
using wrb::test::ExpectedScanSections;
using wrb::test::tagExpectedKey;
using wrb::test::tagExpectedSection;

constexpr uint32_t kOwnProducts = 0x10000;

// The section as the server answers it when its file holds `iniText`, or no file is there.
std::wstring Answer(const tagExpectedSection& section, const std::wstring& iniText) {
    const CIniFile file(iniText);
    ScanIniCache().clear();
    ScanIniCache().init(file.Path().c_str(), 6);
    std::wstring out = L"old";
    EXPECT_TRUE(wrb::GetAndExportScanGroup(section.Group(), out, L"", true));
    return out;
}

template <typename Value>
std::wstring Lines(const tagExpectedSection& section, Value value) {
    std::wstring text = L"[" + section.name + L"]\n";
    for (const tagExpectedKey& key : section.keys) {
        text += key.key + L"=" + (key.inIni ? value(key) : L"") + L"\n";
    }
    return text;
}

std::wstring Default(const tagExpectedKey& key) {
    return key.iniDefault;
}

// Something else than the default, of the key's kind.
std::wstring Other(const tagExpectedKey& key) {
    if (key.source[0] == L't' && key.source != L"type") {
        return L"the " + key.key + L", set";
    }
    if (key.source == L"n1") {
        return L"-7";
    }
    return std::iswdigit(key.source[1]) && key.source[0] == L'b' ? (key.iniDefault == L"1" ? L"0" : L"1") : L"2";
}

TEST(ScanCfgIni, WithoutAFileEveryKeyHasItsDefault) {
    for (const tagExpectedSection& section : ExpectedScanSections()) {
        EXPECT_EQ(Answer(section, L""), Lines(section, Default));
    }
}

TEST(ScanCfgIni, WhatTheFileSaysComesBack) {
    for (const tagExpectedSection& section : ExpectedScanSections()) {
        const std::wstring text = Lines(section, Other);
        EXPECT_EQ(Answer(section, text), text);
    }
}

TEST(ScanCfgIni, ASwitchIsOnAboveZeroAndOffAtAnyOtherNumber) {
    const struct {
        const wchar_t* text;
        wchar_t shown;  // AllowCfg is off by default
    } rows[] = {{L"0", L'0'}, {L"2", L'1'}, {L"-1", L'1'}, {L"", L'0'}, {L"yes", L'0'}};
    for (const auto& row : rows) {
        const std::wstring answer = Answer(ExpectedScanSections()[0],
                                           std::wstring(L"[manual scan configuration]\nALLOWCFG=") + row.text + L"\n");
        EXPECT_EQ(answer.at(answer.find(L"AllowCfg=") + 9), row.shown) << row.text;
    }
}

TEST(ScanCfgIni, AChoiceOutOfRangeIsTheValueWithoutBits) {
    const std::wstring speed = Answer(ExpectedScanSections()[0], L"[Manual Scan Configuration]\nScanSpeed=3\n");
    EXPECT_NE(speed.find(L"ScanSpeed=0\n"), speed.npos);
    for (const auto& [stored, shown] : {std::pair(L"0", L"0"), std::pair(L"1", L"1"), std::pair(L"5", L"1")}) {
        const std::wstring answer =
            Answer(ExpectedScanSections()[9],
                   std::wstring(L"[Spyware Real Time Scan Configuration]\nActionType=") + stored + L"\n");
        EXPECT_NE(answer.find(std::wstring(L"ActionType=") + shown + L"\n"), answer.npos) << answer.size();
    }
}

TEST(ScanCfgIni, TheMainWordTakesTheSwitchOfTheExclusionSection) {
    for (const tagExpectedSection& section : ExpectedScanSections()) {
        if (section.kind != ScanGroupKind::Main) {
            continue;
        }
        for (const wchar_t* value : {L"", L"0"}) {
            const CIniFile file(L"[" + section.name + L" Ex]\nExcludeCallowayProduct=" + value + L"\n");
            CINICache ini;
            ini.init(file.Path().c_str(), 6);
            tagScanGroupValues values;
            wrb::ReadScanGroupIni(ini, section.Group(), values);
            EXPECT_EQ(values.flags & kOwnProducts, *value == L'0' ? 0 : kOwnProducts);
        }
    }
}

TEST(ScanCfgIni, LogLinesSayIniInPlaceOfTheUid) {
    const wchar_t* const texts =
        L"[.EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386][\\temp][\\temp][Universe-5-4]";
    const std::vector<std::vector<std::wstring>> expected = {
        {L"get ms:[ini][21011cfd][20][3][4]" + std::wstring(texts)},
        {L"get rt:[ini][3101b4fd][20][3][4]" + std::wstring(texts)},
        {L"get ps:[ini][3101e63d][20][3][4][1][12][0][1][1][7][1][1]" + std::wstring(texts)},
        {L"get sn:[ini][21011c7d][20][3][4]" + std::wstring(texts)},
        {L"get msex:[ini][00010000][][][]"},
        {L"get rtex:[ini][00010000][][][]"},
        {L"get psex:[ini][00010000][][][]"},
        {L"get snex:[ini][00010000][][][]"},
        {L"[cmdhm_GetSpyMSCfgIni][01010101]", L"[cmdhm_GetSpyMSCfg][Exclusion - file extension list:MP3;]"},
        {L"[cmdhm_GetSpyRTCfgIni][00000001]"},
        {L"[cmdhm_GetSpyPSCfgIni][01010101]", L"[cmdhm_GetSpyPSCfg][Exclusion - file extension list:MP3;]"},
        {L"[cmdhm_GetSpySNCfgIni][01010101]", L"[cmdhm_GetSpySNCfg][Exclusion - file extension list:MP3;]"},
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        TakeCapturedLog();
        Answer(ExpectedScanSections()[i], L"");
        std::vector<std::wstring> lines;
        for (const tagCapturedLine& line : TakeCapturedLog()) {
            EXPECT_EQ(line.level, 8u);
            lines.push_back(line.text);
        }
        lines.resize(expected[i].size());  // the export of the manual spyware group leaves a line of its own
        EXPECT_EQ(lines, expected[i]);
    }
}

}  // namespace
