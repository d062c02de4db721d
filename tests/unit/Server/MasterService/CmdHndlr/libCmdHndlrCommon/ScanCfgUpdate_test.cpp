// The setters: what a message's fields become, which requests and log lines each level makes, what the INI holds then.
#include <gtest/gtest.h>

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
    const wchar_t* spywareList;
} kTypes[] = {
    {L"MS", L"ms", 0x40001, L"1|2|3", 0x1, 0x100, 0x20201, 0x1030301, L"|t1"},
    {L"RT", L"rt", 0x1, L"1|2|3", 0x2, 0x4000, 0x5, 0x4000D, L""},
    {L"PS", L"ps", 0x40001, L"1|2|3|4|5|6|7|8|9|10|11", 0x4, 0x8000, 0x20201, 0x1070301, L"|t1"},
    {L"SN", L"sn", 0x40001, L"1|2|3", 0x400, 0x10000, 0x20201, 0x1070301, L"|t1"},
};

std::vector<std::wstring> ExpectedRequests(const ScanGroup& group, bool all) {
    const tagType& type = kTypes[static_cast<int>(group.type)];
    const wchar_t* const every = all ? L"ALL_" : L"";
    const std::wstring who = all ? L"" : std::wstring(L"|") + kUid;
    uint32_t bit = type.bit;
    std::vector<std::wstring> lines;
    if (group.kind == ScanGroupKind::Main) {
        lines = {FormatWide(L"DB_SET_%s%sCF%s|%u|4294901757|%s|t1|t2|t4|9", every, type.name, who.c_str(), type.value,
                            type.numbers)};
    } else if (group.kind == ScanGroupKind::Spyware) {
        lines = {FormatWide(L"DB_SET_SPYWARE_%s%sCF%s|%u|%u%s|9", every, type.name, who.c_str(), type.spywareValue,
                            type.spywareMask, type.spywareList)};
    } else {
        bit = type.exclusionBit;
        lines = {FormatWide(L"DB_SET_%s%s|%u|t1|t2|t3", all ? L"ALL_EXC_LIST" : L"EXCLUDE_LIST", who.c_str(), bit),
                 FormatWide(L"DB_SET_%s%s_FLG%s|65536|65536", every, type.name, who.c_str())};
    }
    lines.push_back(all ? FormatWide(L"DB_SET_ALL_CONF_FLG|%u|0", bit)
                        : FormatWide(L"DB_SET_CONF_FLAG|%s|%u|0|0", kUid, bit));
    return lines;
}

enum Level { kOne, kAll, kIni };

std::vector<std::wstring> ExpectedLines(const ScanGroup& group, Level level) {
    const tagType& type = kTypes[static_cast<int>(group.type)];
    const bool realTime = group.type == ScanType::RT;
    if (group.kind == ScanGroupKind::Main) {
        const wchar_t* const whos[] = {kUid, L"All", L"ini"};
        std::wstring numbers = type.numbers + std::wstring(group.type == ScanType::PS ? L"|2" : L"");
        for (std::size_t at; (at = numbers.find(L'|')) != numbers.npos;) {
            numbers.replace(at, 1, L"][");
        }
        const bool both = level == kIni || (level == kAll && realTime);
        return {FormatWide(L"set %s:[%s][%08x][fffefffd][%s][t1][t2]%s[t4]", type.tag, whos[level], type.value,
                           numbers.c_str(), both ? L"[t3]" : L"")};
    }
    if (group.kind == ScanGroupKind::Exclusion) {
        const wchar_t* const whos[] = {kUid, L"all", L"ini"};
        const std::wstring tail = level == kIni && realTime ? L"" : FormatWide(L"[%u][9]", type.exclusionBit);
        return {FormatWide(L"set %sex :[%s][00010000][00010000][t1][t2][t3]%s", type.tag, whos[level], tail.c_str())};
    }
    const std::wstring whos[] = {std::wstring(L"][") + kUid, L"All", L"Ini"};
    std::vector<std::wstring> lines{FormatWide(L"[cmdhm_SetSpy%sCfg%s][%08x][%08x]", type.name, whos[level].c_str(),
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
            const auto expected = ExpectedRequests(group, all);
            EXPECT_EQ(RequestLines(db, expected.size()), expected);
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
        {0, L"Enable", L"01", L"0|4294901757|0|0|0|"},
        {0, L"Enable", L"1 ", L"0|4294901757|0|0|0|"},
        {0, L"AllowCfg", L"1", L"2|4294901757|0|0|0|"},
        {0, L"ScanSpeed", L"1", L"131072|4294901757|0|0|0|"},
        {0, L"ScanSpeed", L"2x", L"262144|4294901757|0|0|0|"},
        {0, L"ScanSpeed", L"3", L"0|4294901757|0|0|0|"},
        {0, L"CompressedLayer", L" -7y", L"0|4294901757|-7|0|0|"},
        {0, L"OleLayer", L"many", L"0|4294901757|0|0|0|"},
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
    const auto events = agent.WaitFor(2);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_STREQ(events[0].Text().c_str(), L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t1");
    EXPECT_STREQ(events[1].Text().c_str(), L"CMDHQM_EVENT_RTS_STATUS_CHANGE\t0");
    std::vector<std::wstring> changes;
    for (const tagCapturedLine& line : TakeCapturedLog()) {
        if (line.text.starts_with(L"[cmdhm_SetRTCfgIni]")) {
            changes.push_back(line.text);
        }
    }
    const std::wstring call = L"[cmdhm_SetRTCfgIni] Calling SendQmAgentEventLog() ";
    EXPECT_EQ(changes, (std::vector<std::wstring>{call + L"enable[1]->[1]", call + L"enable[1]->[0]"}));
}

TEST(ScanCfgUpdate, ALevelThatFails) {
    const ScanGroup& realTime = wrb::FindScanGroup(ScanType::RT, ScanGroupKind::Main);
    const ScanGroup& exclusion = wrb::FindScanGroup(ScanType::RT, ScanGroupKind::Exclusion);
    const CScanIni ini(L"[x]\n");
    TakeCapturedLog();
    EXPECT_TRUE(Set(realTime, L"1", L"", false, true)) << "without the central-management agent";
    const std::vector<tagCapturedLine> log = TakeCapturedLog();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back().text, L"[cmdhm_SetRTCfgIni] failed to send RTS status change event to QM agent");
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
    EXPECT_EQ(RequestLines(db, 3).size(), 3u);
}

}  // namespace
