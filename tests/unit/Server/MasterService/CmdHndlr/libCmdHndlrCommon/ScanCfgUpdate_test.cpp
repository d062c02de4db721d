// The setters: what a message's fields become, which requests and log lines each level makes, what the INI holds then.
#include <gtest/gtest.h>

#include <algorithm>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "FakePipeService.h"
#include "FakeProfile.h"
#include "RequestLines.h"
#include "ScanCfgIni.h"
#include "ScanIni.h"
#include "ScanUpdateFields.h"
#include "Text.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace {

using wrb::FormatWide;
using wrb::kScanGroups;
using wrb::ScanGroup;
using wrb::ScanGroupKind;
using wrb::ScanRow;
using wrb::ScanRowKind;
using wrb::ScanType;
using wrb::test::CFakeDbService;
using wrb::test::tagUpdateField;

constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";

bool Set(const ScanGroup& group, const std::wstring& fields, const wchar_t* uid, bool all, bool ini) {
    CCmdProtocol message(fields.data(), static_cast<int64_t>(fields.size() * sizeof(wchar_t)));
    return wrb::SetScanGroup(group, message, uid, all, ini, 9);
}

// The group's own switch on and every other off, numbers 1, 2, ..., choices 2, texts t1, t2, ...
std::wstring CountingFields(const ScanGroup& group) {
    std::vector<tagUpdateField> fields = wrb::test::UpdateFields(group, true);
    int numbers = 0;
    int texts = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const ScanRow& row = *group.updateRows[i];
        fields[i].value = row.kind == ScanRowKind::Int      ? std::to_wstring(++numbers)
                          : row.kind == ScanRowKind::Choice ? L"2"
                          : row.kind == ScanRowKind::Bit
                              ? (row.key == L"Enable" || row.key == L"ExcludeCallowayProduct" ? L"1" : L"0")
                              : L"t" + std::to_wstring(++texts);
    }
    return wrb::test::JoinFields(fields);
}

// What CountingFields come to, by scan type.
const struct tagType {
    const wchar_t* name;
    const wchar_t* tag;
    uint32_t value;
    const wchar_t* numbers;
    uint32_t bit;
    uint32_t exclusionBit;
    uint32_t spywareValue;
    uint32_t spywareMask;
} kTypes[] = {
    {L"MS", L"ms", 0x40001, L"[1][2][3]", 0x1, 0x100, 0x20201, 0x1030301},
    {L"RT", L"rt", 0x1, L"[1][2][3]", 0x2, 0x4000, 0x5, 0x4000D},
    {L"PS", L"ps", 0x40001, L"[1][2][3][4][5][6][7][8][9][10][11][2]", 0x4, 0x8000, 0x20201, 0x1070301},
    {L"SN", L"sn", 0x40001, L"[1][2][3]", 0x400, 0x10000, 0x20201, 0x1070301},
};

enum Level { kOne, kAll, kIni };

std::vector<std::wstring> ExpectedLines(const ScanGroup& group, Level level) {
    const tagType& type = kTypes[static_cast<int>(group.type)];
    const bool realTime = group.type == ScanType::RT;
    const wchar_t* const whos[] = {kUid, group.kind == ScanGroupKind::Main ? L"All" : L"all", L"ini"};
    if (group.kind == ScanGroupKind::Main) {
        const bool both = level == kIni || (level == kAll && realTime);
        return {FormatWide(L"set %s:[%s][%08x][fffefffd]%s[t1][t2]%s[t4]", type.tag, whos[level], type.value,
                           type.numbers, both ? L"[t3]" : L"")};
    }
    if (group.kind == ScanGroupKind::Exclusion) {
        const std::wstring tail = level == kIni && realTime ? L"" : FormatWide(L"[%u][9]", type.exclusionBit);
        return {FormatWide(L"set %sex :[%s][00010000][00010000][t1][t2][t3]%s", type.tag, whos[level], tail.c_str())};
    }
    const std::wstring suffixes[] = {std::wstring(L"][") + kUid, L"All", L"Ini"};
    std::vector<std::wstring> lines{FormatWide(L"[cmdhm_SetSpy%sCfg%s][%08x][%08x]", type.name, suffixes[level].c_str(),
                                               type.spywareValue, type.spywareMask)};
    if (!realTime) {
        lines.push_back(FormatWide(L"[cmdhm_SetSpy%sCfg][Exclusion - file extension list:t1]", type.name));
    }
    return lines;
}

// Of the lines that the setters write; the transport's own are left out.
std::vector<std::wstring> SetterLines() {
    std::vector<std::wstring> lines;
    for (const tagCapturedLine& line : TakeCapturedLog()) {
        if (line.level == 8 && line.text.find(L"enable[") == line.text.npos) {
            lines.push_back(line.text);
        }
    }
    return lines;
}

TEST(ScanCfgUpdate, EachLevelHasItsRequestsAndItsLogLine) {
    const CScanIni ini(L"[x]\n");
    for (const ScanGroup& group : kScanGroups) {
        SCOPED_TRACE(group.name.data());
        const std::wstring fields = CountingFields(group);
        for (const bool all : {false, true}) {
            const CFakeDbService db;
            TakeCapturedLog();
            // With a uid the other level is not written, whatever its flag says.
            EXPECT_TRUE(Set(group, fields, all ? L"" : kUid, true, false));
            const tagType& type = kTypes[static_cast<int>(group.type)];
            const bool exclusion = group.kind == ScanGroupKind::Exclusion;
            const uint32_t bit = exclusion ? type.exclusionBit : type.bit;
            EXPECT_EQ(RequestLines(db, exclusion ? 3 : 2).back(),
                      all ? FormatWide(L"DB_SET_ALL_CONF_FLG|%u|0", bit)
                          : FormatWide(L"DB_SET_CONF_FLAG|%s|%u|0|0", kUid, bit));
            EXPECT_EQ(SetterLines(), ExpectedLines(group, all ? kAll : kOne));
        }
        EXPECT_TRUE(Set(group, fields, nullptr, false, true));
        EXPECT_EQ(SetterLines(), ExpectedLines(group, kIni));
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
        const CFakeDbService db;
        EXPECT_TRUE(Set(group, fields, kUid, false, false));
        const std::wstring line = RequestLines(db, 2)[0];
        const std::wstring start = std::wstring(L"|") + kUid + L"|" + row.request;
        EXPECT_EQ(line.substr(line.find(L'|'), start.size()), start) << row.key << L" " << row.field;
    }
}

TEST(ScanCfgUpdate, TheIniHoldsWhatWasSet) {
    const CScanIni ini(L"[Real Time Scan Configuration]\nEnable=1\n");
    const wrb::test::CFakePipeService agent(L"QMAgentServerNamePipe");
    for (const bool variant : {true, false}) {
        for (const ScanGroup& group : kScanGroups) {
            const std::vector<tagUpdateField> fields = wrb::test::UpdateFields(group, variant);
            EXPECT_TRUE(Set(group, wrb::test::JoinFields(fields), L"", false, true));
            std::wstring section;
            EXPECT_TRUE(wrb::GetAndExportScanGroup(group, section, L"", false));
            for (const tagUpdateField& field : fields) {
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
    const std::vector<tagCapturedLine> log = TakeCapturedLog();
    for (const wchar_t* const change : {L"enable[1]->[1]", L"enable[1]->[0]"}) {
        EXPECT_EQ(std::ranges::count(log, std::wstring(L"[cmdhm_SetRTCfgIni] Calling SendQmAgentEventLog() ") + change,
                                     &tagCapturedLine::text),
                  1);
    }
}

TEST(ScanCfgUpdate, ALevelThatFails) {
    const ScanGroup& realTime = wrb::FindScanGroup(ScanType::RT, ScanGroupKind::Main);
    const ScanGroup& exclusion = wrb::FindScanGroup(ScanType::RT, ScanGroupKind::Exclusion);
    const CScanIni ini(L"[x]\n");
    TakeCapturedLog();
    EXPECT_TRUE(Set(realTime, L"1", L"", false, true)) << "without the central-management agent";
    EXPECT_EQ(TakeCapturedLog().back().text, L"[cmdhm_SetRTCfgIni] failed to send RTS status change event to QM agent");
    EXPECT_FALSE(Set(realTime, L"0" + std::wstring(19, L'\t') + L"a\nExtList=b", L"", false, true)) << "a line break";
    tagScanGroupValues stored;
    wrb::ReadScanGroupIni(ScanIniCache(), realTime, stored);
    EXPECT_EQ(stored.flags & 1, 1u) << "nothing of the group is written";
    EXPECT_EQ(TakeCapturedLog().back().text.substr(0, 12), L"set rt:[ini]") << "and nothing reported";
    CFakeProfile profile;
    CINICache cache(wrb::SystemClock(), profile);
    profile.failingWrites = 6;  // every attempt at the first key
    const wrb::tagScanIniWrite written = wrb::WriteScanGroupIni(cache, realTime, stored);
    EXPECT_TRUE(!written.complete && (written.bitsStored & 0x101) == 0x100) << written.bitsStored;
    EXPECT_EQ(profile.values.size(), realTime.updateRows.size());  // all but the first, and one that no update has
    EXPECT_FALSE(Set(realTime, L"1", kUid, false, true)) << "the last level counts, and no database server runs";
    const CFakeDbService db;
    EXPECT_TRUE(Set(exclusion, L"1\tC:\\a\nb", kUid, false, true)) << "the last level counts";
    const std::wstring agent = std::wstring(L"|") + kUid;
    EXPECT_EQ(RequestLines(db, 3),
              (std::vector{L"DB_SET_EXCLUDE_LIST" + agent + L"|16384|C:\\a\nb||",
                           L"DB_SET_RT_FLG" + agent + L"|65536|65536", L"DB_SET_CONF_FLAG" + agent + L"|16384|0|0"}));
}

}  // namespace
