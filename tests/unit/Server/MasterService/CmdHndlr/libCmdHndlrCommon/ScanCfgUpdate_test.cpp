// The setters: what a message's fields become, which requests and log lines each level makes, what the INI holds then.
#include <gtest/gtest.h>

#include <sstream>

#include "CapturedLog.h"
#include "CmdProtocol.h"
#include "FakePipeService.h"
#include "RequestLines.h"
#include "ScanIni.h"
#include "ScanUpdateFields.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace {

using wrb::kScanGroups;
using wrb::ScanGroup;
using wrb::ScanRow;
using wrb::ScanRowKind;
using wrb::test::CFakeDbService;
using wrb::test::tagUpdateField;

constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";

bool Set(const ScanGroup& group, const std::wstring& fields, const wchar_t* uid, bool all, bool ini) {
    CCmdProtocol message(fields.c_str());
    return wrb::SetScanGroup(group, message, uid, all, ini, 9);
}

std::vector<std::wstring> Words(const wchar_t* text) {
    std::wistringstream in(text);
    std::vector<std::wstring> words;
    for (std::wstring word; in >> word;) {
        words.push_back(word);
    }
    return words;
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

// In the order of kScanGroups: the requests for an agent and for all, the log lines of agent, all and INI. @ is the
// uid.
const struct {
    const wchar_t* requests;
    const wchar_t* allRequests;
    const wchar_t* logs[3];
} kLevels[] = {
    {L"DB_SET_MSCF|@|262145|4294901757|1|2|3|t1|t2|t4|9 DB_SET_CONF_FLAG|@|1|0|0",
     L"DB_SET_ALL_MSCF|262145|4294901757|1|2|3|t1|t2|t4|9 DB_SET_ALL_CONF_FLG|1|0",
     {L"set ms:[@][00040001][fffefffd][1][2][3][t1][t2][t4]", L"set ms:[All][00040001][fffefffd][1][2][3][t1][t2][t4]",
      L"set ms:[ini][00040001][fffefffd][1][2][3][t1][t2][t3][t4]"}},
    {L"DB_SET_SPYWARE_MSCF|@|131585|16974593|t1|9 DB_SET_CONF_FLAG|@|1|0|0",
     L"DB_SET_SPYWARE_ALL_MSCF|131585|16974593|t1|9 DB_SET_ALL_CONF_FLG|1|0",
     {L"[cmdhm_SetSpyMSCfg][@][00020201][01030301]", L"[cmdhm_SetSpyMSCfgAll][00020201][01030301]",
      L"[cmdhm_SetSpyMSCfgIni][00020201][01030301]"}},
    {L"DB_SET_EXCLUDE_LIST|@|256|t1|t2|t3 DB_SET_MS_FLG|@|65536|65536 DB_SET_CONF_FLAG|@|256|0|0",
     L"DB_SET_ALL_EXC_LIST|256|t1|t2|t3 DB_SET_ALL_MS_FLG|65536|65536 DB_SET_ALL_CONF_FLG|256|0",
     {L"set msex :[@][00010000][00010000][t1][t2][t3][256][9]",
      L"set msex :[all][00010000][00010000][t1][t2][t3][256][9]",
      L"set msex :[ini][00010000][00010000][t1][t2][t3][256][9]"}},
    {L"DB_SET_RTCF|@|1|4294901757|1|2|3|t1|t2|t4|9 DB_SET_CONF_FLAG|@|2|0|0",
     L"DB_SET_ALL_RTCF|1|4294901757|1|2|3|t1|t2|t4|9 DB_SET_ALL_CONF_FLG|2|0",
     {L"set rt:[@][00000001][fffefffd][1][2][3][t1][t2][t4]",
      L"set rt:[All][00000001][fffefffd][1][2][3][t1][t2][t3][t4]",
      L"set rt:[ini][00000001][fffefffd][1][2][3][t1][t2][t3][t4]"}},
    {L"DB_SET_SPYWARE_RTCF|@|5|262157|9 DB_SET_CONF_FLAG|@|2|0|0",
     L"DB_SET_SPYWARE_ALL_RTCF|5|262157|9 DB_SET_ALL_CONF_FLG|2|0",
     {L"[cmdhm_SetSpyRTCfg][@][00000005][0004000d]", L"[cmdhm_SetSpyRTCfgAll][00000005][0004000d]",
      L"[cmdhm_SetSpyRTCfgIni][00000005][0004000d]"}},
    {L"DB_SET_EXCLUDE_LIST|@|16384|t1|t2|t3 DB_SET_RT_FLG|@|65536|65536 DB_SET_CONF_FLAG|@|16384|0|0",
     L"DB_SET_ALL_EXC_LIST|16384|t1|t2|t3 DB_SET_ALL_RT_FLG|65536|65536 DB_SET_ALL_CONF_FLG|16384|0",
     {L"set rtex :[@][00010000][00010000][t1][t2][t3][16384][9]",
      L"set rtex :[all][00010000][00010000][t1][t2][t3][16384][9]",
      L"set rtex :[ini][00010000][00010000][t1][t2][t3]"}},
    {L"DB_SET_PSCF|@|262145|4294901757|1|2|3|4|5|6|7|8|9|10|11|t1|t2|t4|9 DB_SET_CONF_FLAG|@|4|0|0",
     L"DB_SET_ALL_PSCF|262145|4294901757|1|2|3|4|5|6|7|8|9|10|11|t1|t2|t4|9 DB_SET_ALL_CONF_FLG|4|0",
     {L"set ps:[@][00040001][fffefffd][1][2][3][4][5][6][7][8][9][10][11][2][t1][t2][t4]",
      L"set ps:[All][00040001][fffefffd][1][2][3][4][5][6][7][8][9][10][11][2][t1][t2][t4]",
      L"set ps:[ini][00040001][fffefffd][1][2][3][4][5][6][7][8][9][10][11][2][t1][t2][t3][t4]"}},
    {L"DB_SET_SPYWARE_PSCF|@|131585|17236737|t1|9 DB_SET_CONF_FLAG|@|4|0|0",
     L"DB_SET_SPYWARE_ALL_PSCF|131585|17236737|t1|9 DB_SET_ALL_CONF_FLG|4|0",
     {L"[cmdhm_SetSpyPSCfg][@][00020201][01070301]", L"[cmdhm_SetSpyPSCfgAll][00020201][01070301]",
      L"[cmdhm_SetSpyPSCfgIni][00020201][01070301]"}},
    {L"DB_SET_EXCLUDE_LIST|@|32768|t1|t2|t3 DB_SET_PS_FLG|@|65536|65536 DB_SET_CONF_FLAG|@|32768|0|0",
     L"DB_SET_ALL_EXC_LIST|32768|t1|t2|t3 DB_SET_ALL_PS_FLG|65536|65536 DB_SET_ALL_CONF_FLG|32768|0",
     {L"set psex :[@][00010000][00010000][t1][t2][t3][32768][9]",
      L"set psex :[all][00010000][00010000][t1][t2][t3][32768][9]",
      L"set psex :[ini][00010000][00010000][t1][t2][t3][32768][9]"}},
    {L"DB_SET_SNCF|@|262145|4294901757|1|2|3|t1|t2|t4|9 DB_SET_CONF_FLAG|@|1024|0|0",
     L"DB_SET_ALL_SNCF|262145|4294901757|1|2|3|t1|t2|t4|9 DB_SET_ALL_CONF_FLG|1024|0",
     {L"set sn:[@][00040001][fffefffd][1][2][3][t1][t2][t4]", L"set sn:[All][00040001][fffefffd][1][2][3][t1][t2][t4]",
      L"set sn:[ini][00040001][fffefffd][1][2][3][t1][t2][t3][t4]"}},
    {L"DB_SET_SPYWARE_SNCF|@|131585|17236737|t1|9 DB_SET_CONF_FLAG|@|1024|0|0",
     L"DB_SET_SPYWARE_ALL_SNCF|131585|17236737|t1|9 DB_SET_ALL_CONF_FLG|1024|0",
     {L"[cmdhm_SetSpySNCfg][@][00020201][01070301]", L"[cmdhm_SetSpySNCfgAll][00020201][01070301]",
      L"[cmdhm_SetSpySNCfgIni][00020201][01070301]"}},
    {L"DB_SET_EXCLUDE_LIST|@|65536|t1|t2|t3 DB_SET_SN_FLG|@|65536|65536 DB_SET_CONF_FLAG|@|65536|0|0",
     L"DB_SET_ALL_EXC_LIST|65536|t1|t2|t3 DB_SET_ALL_SN_FLG|65536|65536 DB_SET_ALL_CONF_FLG|65536|0",
     {L"set snex :[@][00010000][00010000][t1][t2][t3][65536][9]",
      L"set snex :[all][00010000][00010000][t1][t2][t3][65536][9]",
      L"set snex :[ini][00010000][00010000][t1][t2][t3][65536][9]"}},
};

std::wstring WithUid(std::wstring text) {
    for (std::size_t at; (at = text.find(L'@')) != text.npos;) {
        text.replace(at, 1, kUid);
    }
    return text;
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

std::vector<std::wstring> ExpectedLines(std::size_t group, int level) {
    std::vector<std::wstring> lines{WithUid(kLevels[group].logs[level])};
    if (kScanGroups[group].kind == wrb::ScanGroupKind::Spyware && kScanGroups[group].type != wrb::ScanType::RT) {
        lines.push_back(L"[cmdhm_Set" + std::wstring(kScanGroups[group].name) +
                        L"][Exclusion - file extension list:t1]");
    }
    return lines;
}

TEST(ScanCfgUpdate, EachLevelHasItsRequestsAndItsLogLine) {
    const CScanIni ini(L"[x]\n");
    for (std::size_t i = 0; i < kScanGroups.size(); ++i) {
        SCOPED_TRACE(i);
        const std::wstring fields = CountingFields(kScanGroups[i]);
        for (const bool all : {false, true}) {
            const CFakeDbService db;
            TakeCapturedLog();
            // With a uid the other level is not written, whatever its flag says.
            EXPECT_TRUE(Set(kScanGroups[i], fields, all ? L"" : kUid, true, false));
            const auto expected = Words(WithUid(all ? kLevels[i].allRequests : kLevels[i].requests).c_str());
            EXPECT_EQ(RequestLines(db, expected.size()), expected);
            EXPECT_EQ(SetterLines(), ExpectedLines(i, all ? 1 : 0));
        }
        EXPECT_TRUE(Set(kScanGroups[i], fields, nullptr, false, true));
        EXPECT_EQ(SetterLines(), ExpectedLines(i, 2));
        EXPECT_FALSE(Set(kScanGroups[i], fields, nullptr, false, false)) << "no level";
    }
}

TEST(ScanCfgUpdate, WhatAFieldCountsAs) {
    const struct {
        std::size_t group;
        const wchar_t* key;
        const wchar_t* field;
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
        {0, L"CompressedLayer", L" -7y", L"0|4294901757|4294967289|0|0|"},
        {0, L"OleLayer", L"many", L"0|4294901757|0|0|0|"},
        {0, L"PossibleVirusCustActInActiveAct", L"99999999999", L"0|4294901757|0|0|2147483647|"},
        {4, L"ActionType", L"", L"8|262157|"},
        {4, L"ActionType", L"1", L"0|262157|"},
        {7, L"ScanType", L"7", L"0|17236737|"},
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
        const std::wstring start = WithUid(L"|@|") + row.request;
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
    const ScanGroup& realTime = wrb::FindScanGroup(wrb::ScanType::RT, wrb::ScanGroupKind::Main);
    const ScanGroup& exclusion = wrb::FindScanGroup(wrb::ScanType::RT, wrb::ScanGroupKind::Exclusion);
    const CScanIni ini(L"[x]\n");
    TakeCapturedLog();
    EXPECT_TRUE(Set(realTime, L"1", L"", false, true)) << "without the central-management agent";
    const std::vector<tagCapturedLine> log = TakeCapturedLog();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back().text, L"[cmdhm_SetRTCfgIni] failed to send RTS status change event to QM agent");
    EXPECT_FALSE(Set(exclusion, L"1\tC:\\a\nExcludedExt=b", L"", false, true)) << "a line break";
    EXPECT_FALSE(Set(realTime, L"1", kUid, false, true)) << "the last level counts, and no database server runs";
    const CFakeDbService db;
    EXPECT_TRUE(Set(exclusion, L"1\tC:\\a\nb", kUid, false, true)) << "the last level counts";
    EXPECT_EQ(RequestLines(db, 3).size(), 3u);
}

}  // namespace
