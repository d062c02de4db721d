// The setters: what a message's fields become, which requests and log lines each level makes, what the INI holds then.
#include <gtest/gtest.h>

#include <algorithm>

#include "CmdProtocol.h"
#include "FakePipeService.h"
#include "FakeProfile.h"
#include "Fixtures.h"
#include "ScanCfgIni.h"
#include "ScanUpdateFields.h"
#include "Text.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace {

using wrb::FormatWide;
using wrb::kScanGroups;
using wrb::ScanGroup;
using wrb::ScanGroupKind;
using wrb::ScanType;
using wrb::test::FakeDbService;
using wrb::test::UpdateField;
using enum ScanGroupKind;
using enum ScanType;

bool Set(const ScanGroup& group, const std::wstring& fields, const wchar_t* uid, bool all, bool ini) {
    CCmdProtocol message(fields.data(), static_cast<int64_t>(fields.size() * sizeof(wchar_t)));
    return wrb::SetScanGroup(group, message, uid, all, ini, 9);
}

enum class Level { One, All, Ini };

// Numbers 1, 2, ..., choices 2, texts t1, t2, ...; of the switches only the group's own is on.
TEST(ScanCfgUpdate, EachLevelHasItsRequestsAndItsLogLine) {
    const wchar_t* const kMain = L"1 0 0 0 0 0 0 1 0 2 0 3 0 0 0 t1 0 0 t2 t3 0 0 t4 0 2 0";
    const wchar_t* const kRealTime = L"1 0 0 0 0 0 0 1 0 0 2 0 3 0 0 0 0 0 0 t1 0 0 t2 t3 0 0 0 t4 0 0 0 0";
    const wchar_t* const kTimes = L"1 0 0 0 0 0 0 1 0 2 0 3 0 0 0 0 t1 0 4 5 6 7 8 9 10 11 0 t2 t3 0 t4 0 2 0";
    const wchar_t* const kNow = L"0 0 0 0 0 1 0 2 0 3 0 0 0 t1 0 0 t2 t3 0 t4 0 2 0 1 0";
    const wchar_t* const kLists = L"1 t1 t2 t3";
    const wchar_t* const kSpyware = L"1 0 2 2 0 t1";
    const wchar_t* const kSpywareAlert = L"1 0 2 2 0 0 t1";
    using enum Level;
    const struct {
        ScanType type;
        ScanGroupKind kind;
        const wchar_t* fields;
        Level level;
        const wchar_t* line;
    } rows[] = {
        {MS, Main, kMain, One, L"set ms:[u][00040001][fffefffd][1][2][3][t1][t2][t4]"},
        {MS, Main, kMain, All, L"set ms:[All][00040001][fffefffd][1][2][3][t1][t2][t4]"},
        {MS, Main, kMain, Ini, L"set ms:[ini][00040001][fffefffd][1][2][3][t1][t2][t3][t4]"},
        {RT, Main, kRealTime, One, L"set rt:[u][00000001][fffefffd][1][2][3][t1][t2][t4]"},
        {RT, Main, kRealTime, All, L"set rt:[All][00000001][fffefffd][1][2][3][t1][t2][t3][t4]"},
        {PS, Main, kTimes, One, L"set ps:[u][00040001][fffefffd][1][2][3][4][5][6][7][8][9][10][11][2][t1][t2][t4]"},
        {SN, Main, kNow, One, L"set sn:[u][00040001][fffefffd][1][2][3][t1][t2][t4]"},
        {MS, Exclusion, kLists, One, L"set msex :[u][00010000][00010000][t1][t2][t3][256][9]"},
        {MS, Exclusion, kLists, All, L"set msex :[all][00010000][00010000][t1][t2][t3][256][9]"},
        {MS, Exclusion, kLists, Ini, L"set msex :[ini][00010000][00010000][t1][t2][t3][256][9]"},
        {RT, Exclusion, kLists, One, L"set rtex :[u][00010000][00010000][t1][t2][t3][16384][9]"},
        {RT, Exclusion, kLists, Ini, L"set rtex :[ini][00010000][00010000][t1][t2][t3]"},
        {PS, Exclusion, kLists, One, L"set psex :[u][00010000][00010000][t1][t2][t3][32768][9]"},
        {SN, Exclusion, kLists, One, L"set snex :[u][00010000][00010000][t1][t2][t3][65536][9]"},
        {MS, Spyware, kSpyware, One, L"[cmdhm_SetSpyMSCfg][u][00020201][01030301]"},
        {MS, Spyware, kSpyware, All, L"[cmdhm_SetSpyMSCfgAll][00020201][01030301]"},
        {MS, Spyware, kSpyware, Ini, L"[cmdhm_SetSpyMSCfgIni][00020201][01030301]"},
        {RT, Spyware, L"1 0 2 0", One, L"[cmdhm_SetSpyRTCfg][u][00000005][0004000d]"},
        {PS, Spyware, kSpywareAlert, One, L"[cmdhm_SetSpyPSCfg][u][00020201][01070301]"},
        {SN, Spyware, kSpywareAlert, One, L"[cmdhm_SetSpySNCfg][u][00020201][01070301]"},
    };
    const BoundIni ini(L"[x]\n");
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << std::wstring(row.line));
        const ScanGroup& group = wrb::FindScanGroup(row.type, row.kind);
        std::wstring fields = row.fields;
        std::ranges::replace(fields, L' ', L'\t');
        std::wstring lines = row.line + std::wstring(L"\n");
        if (row.kind == Spyware && row.type != RT) {
            lines += FormatWide(L"[cmdhm_Set%s][Exclusion - file extension list:t1]\n", group.name.data());
        }
        const FakeDbService db;
        TakeOwnText();
        // With a uid the other level is not written, whatever its flag says.
        EXPECT_TRUE(Set(group, fields, row.level == One ? L"u" : L"", row.level != Ini, row.level == Ini));
        EXPECT_EQ(TakeOwnText(), lines);
        if (row.level != Ini) {
            EXPECT_EQ(RequestLines(db, row.kind == Exclusion ? 3 : 2).back(),
                      FormatWide(row.level == One ? L"DB_SET_CONF_FLAG|u|%u|0|0" : L"DB_SET_ALL_CONF_FLG|%u|0",
                                 group.configFlag));
        }
        EXPECT_FALSE(Set(group, fields, nullptr, false, false)) << "no level";
    }
}

TEST(ScanCfgUpdate, WhatAFieldCountsAs) {
    const struct {
        std::size_t group;
        const wchar_t* key;
        std::wstring field;
        const wchar_t* request;  // value, mask and numbers
    } rows[] = {
        {0, L"", L"", L"0|4294901757|0|0|0|"},
        {0, L"Enable", L"1", L"1|4294901757|0|0|0|"},
        {0, L"Enable", L"true", L"0|4294901757|0|0|0|"},
        {0, L"Enable", L"1 ", L"0|4294901757|0|0|0|"},
        {0, L"ScanSpeed", L"1", L"131072|4294901757|0|0|0|"},
        {0, L"ScanSpeed", L"2x", L"262144|4294901757|0|0|0|"},
        {0, L"ScanSpeed", L"3", L"0|4294901757|0|0|0|"},
        {0, L"CompressedLayer", L" -7y", L"0|4294901757|-7|0|0|"},
        {0, L"PossibleVirusCustActInActiveAct", L"99999999999", L"0|4294901757|0|0|2147483647|"},
        {4, L"ActionType", L"", L"8|262157|"},
        {4, L"ActionType", L"1", L"0|262157|"},
        {7, L"ScanType", L"7", L"0|17236737|"},
        {2, L"ExcludedFolder", {L"a\0b\tc\0\td", 8}, L"256|a|c|d"},
    };
    for (const auto& row : rows) {
        const ScanGroup& group = kScanGroups[row.group];
        std::wstring fields;  // empty up to the field, missing behind it
        for (std::size_t i = 0; *row.key != L'\0' && group.updateRows[i]->key != row.key; ++i) {
            fields += L'\t';
        }
        fields += row.field;
        const FakeDbService db;
        EXPECT_TRUE(Set(group, fields, kUid, false, false));
        const std::wstring line = RequestLines(db, 2)[0];
        const std::wstring start = std::wstring(L"|") + kUid + L"|" + row.request;
        EXPECT_EQ(line.substr(line.find(L'|'), start.size()), start) << row.key << L" " << row.field;
    }
}

TEST(ScanCfgUpdate, TheIniHoldsWhatWasSet) {
    const BoundIni ini(L"[Real Time Scan Configuration]\nEnable=1\n");
    const wrb::test::FakePipeService agent(L"QMAgentServerNamePipe");
    for (const bool variant : {true, false}) {
        for (const ScanGroup& group : kScanGroups) {
            const std::vector<UpdateField> fields = wrb::test::UpdateFields(group, variant);
            EXPECT_TRUE(Set(group, wrb::test::JoinFields(fields), L"", false, true));
            std::wstring section;
            EXPECT_TRUE(wrb::GetAndExportScanGroup(group, section, L"", false));
            for (const UpdateField& field : fields) {
                EXPECT_NE(section.find(L"\n" + field.key + L"=" + field.value + L"\n"), section.npos)
                    << std::string(section.begin(), section.end()) << field.key.c_str();
            }
            EXPECT_EQ(section.find(L"EnableAggressiveClean=1"), section.npos);
        }
    }
    std::wstring events;
    for (const auto& event : agent.WaitFor(2)) {
        events += event.Text() + L"|";
    }
    EXPECT_TRUE(events == L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t1|CMDHQM_EVENT_RTS_STATUS_CHANGE\t0|");
    const std::vector<CapturedLine> log = TakeCapturedLog();
    for (const wchar_t* const change : {L"enable[1]->[1]", L"enable[1]->[0]"}) {
        EXPECT_EQ(std::ranges::count(log, std::wstring(L"[cmdhm_SetRTCfgIni] Calling SendQmAgentEventLog() ") + change,
                                     &CapturedLine::text),
                  1);
    }
}

TEST(ScanCfgUpdate, ALevelThatFails) {
    const ScanGroup& realTime = wrb::FindScanGroup(RT, Main);
    const ScanGroup& exclusion = wrb::FindScanGroup(RT, Exclusion);
    const BoundIni ini(L"[x]\n");
    TakeCapturedLog();
    EXPECT_TRUE(Set(realTime, L"1", L"", false, true)) << "without the central-management agent";
    EXPECT_EQ(TakeCapturedLog().back().text, L"[cmdhm_SetRTCfgIni] failed to send RTS status change event to QM agent");
    EXPECT_FALSE(Set(realTime, L"0" + std::wstring(19, L'\t') + L"a\nExtList=b", L"", false, true)) << "a line break";
    wrb::ScanGroupValues stored;
    wrb::ReadScanGroupIni(ScanIniCache(), realTime, stored);
    EXPECT_EQ(stored.flags & 1, 1u) << "nothing of the group is written";
    EXPECT_EQ(TakeCapturedLog().back().text.substr(0, 12), L"set rt:[ini]") << "and nothing reported";
    FakeProfile profile;
    CINICache cache(wrb::SystemClock(), profile);
    profile.failingWrites = 6;  // every attempt at the first key
    const wrb::ScanIniWrite written = wrb::WriteScanGroupIni(cache, realTime, stored);
    EXPECT_TRUE(!written.complete && (written.bitsStored & 0x101) == 0x100) << written.bitsStored;
    EXPECT_EQ(profile.values.size(), realTime.updateRows.size());  // all but the first, and one that no update has
    EXPECT_FALSE(Set(realTime, L"1", kUid, false, true)) << "the last level counts, and no database server runs";
    const FakeDbService db;
    for (const std::wstring& text : {std::wstring(L"a\r[b]"), std::wstring(L"a\n[b]"), std::wstring(65'536, L'a')}) {
        EXPECT_FALSE(Set(exclusion, L"1\t" + text, kUid, false, false)) << "an agent's line would end early";
    }
    EXPECT_TRUE(Set(exclusion, L"1\tC:\\a", kUid, false, true)) << "the last level counts";
    const std::wstring agent = std::wstring(L"|") + kUid;
    EXPECT_EQ(RequestLines(db, 3),
              (std::vector{L"DB_SET_EXCLUDE_LIST" + agent + L"|16384|C:\\a||",
                           L"DB_SET_RT_FLG" + agent + L"|65536|65536", L"DB_SET_CONF_FLAG" + agent + L"|16384|0|0"}));
}

}  // namespace
