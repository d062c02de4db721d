// The getters of one group and of all, against a database server that answers as a test says.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "DbAllScanRecord.h"
#include "ExpectedScanSections.h"
#include "Fixtures.h"
#include "cmdhm_ScanCfg.h"

namespace {

using wrb::ScanGroupKind;
using wrb::test::DistinctScanValues;
using wrb::test::ExpectedScanSections;
using wrb::test::FakeDbService;
using wrb::test::WideBytes;

constexpr wchar_t kIni[] =
    L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=1\nName_000=Joke\n1st_Act_000=9\n1st_Act_Universe=5\n";
constexpr const wchar_t* kAll = L"DBV2_CLIENT_GET_ALL_SCAN_CFG";
constexpr const wchar_t* kAllEx = L"DBV2_CLIENT_GET_ALL_SCAN_EX";

// Command to answer; a command that is missing here is one of an agent that the server does not know.
using Answers = std::map<std::wstring, std::string>;

auto Answering(const Answers& answers) {
    return [answers](const wrb::test::DbRequest& request) {
        const auto answer = answers.find(request.Name());
        return std::optional(answer == answers.end() ? std::string() : answer->second);
    };
}

// In the order of ExpectedScanSections. In the log, `@` stands for the uid and the flags, each in brackets.
constexpr struct {
    const wchar_t* command;
    const wchar_t* bit;
    const wchar_t* log;
} kGroups[] = {
    {L"DB_GET_MSCF", L"1", L"get ms:@[21][-3][4][.EXE][C:\\move][C:\\move][Joke-1-2;Universe-5]\n"},
    {L"DB_GET_RTCF", L"2", L"get rt:@[21][-3][4][.EXE][C:\\move][C:\\move][Joke-1-2;Universe-5]\n"},
    {L"DB_GET_PSCF", L"4",
     L"get ps:@[21][-3][4][1][2][3][4][5][6][7][8][.EXE][C:\\move][C:\\move][Joke-1-2;Universe-5]\n"},
    {L"DB_GET_SNCF", L"1024", L"get sn:@[21][-3][4][.EXE][C:\\move][C:\\move][Joke-1-2;Universe-5]\n"},
    {L"DB_GET_MSCF", L"256", L"get msex:@[C:\\a][b.txt][.log]\n"},
    {L"DB_GET_RTCF", L"16384", L"get rtex:@[C:\\a][b.txt][.log]\n"},
    {L"DB_GET_PSCF", L"32768", L"get psex:@[C:\\a][b.txt][.log]\n"},
    {L"DB_GET_SNCF", L"65536", L"get snex:@[C:\\a][b.txt][.log]\n"},
    {L"DB_GET_SPYWARE_MSCF", L"1",
     L"[cmdhm_GetSpyMSCfg]@\n[cmdhm_GetSpyMSCfg][Exclusion - file extension list:MP3;AVI]\n"},
    {L"DB_GET_SPYWARE_RTCF", L"2", L"[cmdhm_GetSpyRTCfg]@\n"},
    {L"DB_GET_SPYWARE_PSCF", L"4",
     L"[cmdhm_GetSpyPSCfg]@\n[cmdhm_GetSpyPSCfg][Exclusion - file extension list:MP3;AVI]\n"},
    {L"DB_GET_SPYWARE_SNCF", L"1024",
     L"[cmdhm_GetSpySNCfg]@\n[cmdhm_GetSpySNCfg][Exclusion - file extension list:MP3;AVI]\n"},
};

std::wstring ExpectedLog(std::wstring log, const std::wstring& section) {
    const std::wstring head = std::wstring(L"[") + kUid + L"][89abcdef]";
    log.replace(log.find(L'@'), 1, head);
    return log.starts_with(L"[cmdhm_GetSpyMS") ? log + L"[cmdhm_ExportSpyMSCfg][" + section + L"]\n" : log;
}

// Fields behind the last one that the group has are ignored.
Answers StoredAnswers(const wchar_t* command, ScanGroupKind kind) {
    if (kind == ScanGroupKind::Spyware) {
        return {{command, WideBytes(L"-1985229329\tMP3;AVI")}};
    }
    return {{command, WideBytes(L"-1985229329\t21\t-3\t4\t1\t2\t3\t4\t5\t6\t7\t8")},
            {L"DB_GET_EXTRA", WideBytes(kind == ScanGroupKind::Main ? L".EXE\tC:\\move\tunused\tunused\tJoke-1-2\tspare"
                                                                    : L"C:\\a\tb.txt\t.log")}};
}

// In the order of the members, of which no two groups read different ones. The custom action is completed.
const wrb::ScanGroupValues kStored{
    0x89ABCDEF, 21,       0xFFFFFFFD, 4,         1,       2,           3,           4,
    5,          6,        7,          8,         L".EXE", L"C:\\move", L"C:\\move", L"Joke-1-2;Universe-5",
    L"C:\\a",   L"b.txt", L".log",    L"MP3;AVI"};

// The bit is cleared once both answers are there, also when the second one is empty.
TEST(ScanCfgDatabase, AGroupIsAskedForRenderedAndResetAndEmptyWithoutOneOfItsAnswers) {
    const BoundIni ini(kIni);
    const std::wstring agent = std::wstring(L"|") + kUid + L"|";
    std::wstring out = L"old";
    for (std::size_t i = 0; i < std::size(kGroups); ++i) {
        SCOPED_TRACE(i);
        const auto& [command, bit, log] = kGroups[i];
        const wrb::test::ExpectedSection& section = ExpectedScanSections()[i];
        const Answers whole = StoredAnswers(command, section.kind);
        std::vector<std::wstring> requests{command + agent + L"0"};
        if (whole.size() > 1) {
            requests.push_back(L"DB_GET_EXTRA" + agent + bit);
        }
        for (const bool reset : {false, true}) {
            if (reset) {
                requests.push_back(L"DB_SET_CONF_FLAG" + agent + L"0|" + bit + L"|0");
            }
            const FakeDbService db(Answering(whole));
            TakeOwnText();
            EXPECT_TRUE(wrb::GetAndExportScanGroup(section.Group(), out, kUid, reset));
            EXPECT_EQ(out, section.Text(kUid, kStored));
            EXPECT_EQ(TakeOwnText(), ExpectedLog(log, out));
            EXPECT_EQ(RequestLines(db, requests.size()), requests);
        }
        for (const auto& missing : whole) {
            Answers answers = whole;
            answers.erase(missing.first);
            const FakeDbService db(Answering(answers));
            EXPECT_FALSE(wrb::GetAndExportScanGroup(section.Group(), out, kUid, true));
            EXPECT_EQ(out, L"");
            EXPECT_EQ(RequestLines(db, 1).size() == 1, missing.first != L"DB_GET_EXTRA");
        }
    }
}

TEST(ScanCfgDatabase, GarbageReadsAsZeroMissingFieldsAsEmptyAndALongUidIsCut) {
    const BoundIni ini(kIni);
    const FakeDbService db(Answering(
        {{L"DB_GET_PSCF", WideBytes(L"x\t 7y\t\t99999999999\t-1")}, {L"DB_GET_EXTRA", WideBytes(L"only this")}}));
    wrb::ScanGroupValues values = kStored;
    EXPECT_TRUE(cmdhm_GetPSCfg(values, (std::wstring(kUid) + L"more").c_str(), false));
    EXPECT_EQ(values, (wrb::ScanGroupValues{0,   7,   0,   2147483647, 0xFFFFFFFF,   0,   0,   0,
                                            0,   0,   0,   0,          L"only this", L"", L"", L"Joke-9;Universe-5",
                                            L"", L"", L"", L""}));
    EXPECT_EQ(RequestLines(db, 2)[0], std::wstring(L"DB_GET_PSCF|") + kUid + L"|0");
}

TEST(ScanCfgDatabase, RestoreSessionsAreNumberedUpToTheFirstEmptyOne) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"", L""},
        {L"\tnever", L"[Spyware Restore Session]\nRestoreSessionCount = 0\n"},
        {L"one\ttwo = 2\t\tnever",
         L"[Spyware Restore Session]\nRestoreSession_0 = one\nRestoreSession_1 = two = 2\nRestoreSessionCount = 2\n"},
    };
    for (const auto& [answer, section] : rows) {
        const FakeDbService db(Answering({{L"DB_GET_BACKUP_LOG_ALL_SESSIONS", WideBytes(answer)}}));
        std::wstring out = L"old";
        TakeOwnText();
        EXPECT_EQ(cmdhm_GetSpyRestoreList(out, kUid), *section != L'\0');
        EXPECT_EQ(out, section);
        EXPECT_EQ(TakeOwnText(), out.empty() ? L"" : L"[cmdhm_GetSpyRestoreList] [" + out + L"]\n");
    }
}

TEST(AllScanCfg, TwelveSectionsOrNothing) {
    wrb::AllScanConfig config;
    wrb::AllScanLists lists;
    std::wstring reply;
    config.hasConfig = config.hasExtra = true;
    for (std::size_t scan = 0; scan < kScanTypeCount; ++scan) {
        // Only the word of PS has the bit that the exclusion section shows.
        wrb::ScanGroupValues values = DistinctScanValues(0x44444444u >> scan);
        for (const wrb::ScanText text : {&wrb::ScanGroupValues::moveDir, &wrb::ScanGroupValues::excludedFolder,
                                         &wrb::ScanGroupValues::excludedFile, &wrb::ScanGroupValues::excludedExt}) {
            values.*text += std::to_wstring(scan);
        }
        values.cleanFailedMoveDir = values.moveDir;
        values.excludeFileExtList = scan == 1 ? L"" : L"spy" + std::to_wstring(scan);
        config.scans[scan] = values;
        config.spywareFlags[scan] = 0x01010000u >> scan;
        lists.scans[scan] = {values.excludedFolder, values.excludedFile, values.excludedExt, values.excludeFileExtList};
        reply += ExpectedScanSections()[scan].Text(kUid, values);
        values.flags = config.spywareFlags[scan];
        reply += ExpectedScanSections()[8 + scan].Text(kUid, values);
        values.flags = config.scans[scan == 3 ? 2 : scan].flags;  // scan now shows that of prescheduled
        reply += ExpectedScanSections()[4 + scan].Text(kUid, values);
    }
    const std::wregex list(L"(Excluded\\w+|ExcludeFileExtList)=[^\n]*");
    const std::string first = RecordMessage(kAll, config);
    const std::string second = RecordMessage(kAllEx, lists);
    config.hasExtra = false;
    const struct {
        std::string first;
        std::string second;
        bool reset;
        std::wstring reply;
        std::vector<std::wstring> requests;
    } rows[] = {
        {first, second, true, reply, {kAll, kAllEx, L"DB_SET_CONF_FLAG"}},
        {RecordMessage(kAll, config), second, false, std::regex_replace(reply, list, L"$1="), {kAll}},
        {"", second, true, L"", {kAll}},
        {first, "", true, L"", {kAll, kAllEx}},
        {RecordMessage(kAll, wrb::AllScanConfig()), second, true, L"", {kAll}},
        {first.substr(0, first.size() - 1), second, true, L"", {kAll}},
        {first, second.substr(0, second.size() - 1), true, L"", {kAll, kAllEx}},
        {WideBytes(L"1\t2"), second, true, L"", {kAll}},
    };
    for (const auto& row : rows) {
        const FakeDbService db(Answering({{kAll, row.first}, {kAllEx, row.second}}));
        std::wstring out = L"old";
        EXPECT_EQ(cmdhm_GetAllScanCfg(out, (std::wstring(kUid) + L"more").c_str(), row.reset), !row.reply.empty());
        EXPECT_EQ(out, row.reply);
        const auto requests = db.WaitFor(row.requests.size());
        ASSERT_TRUE(std::ranges::equal(requests, row.requests, {}, &wrb::test::DbRequest::Name));
        EXPECT_EQ(requests[0].Texts().at(2), kUid);
        if (requests.size() == 3) {
            const std::vector<std::wstring> reset{L"DB_SET_CONF_FLAG", L"-1", kUid, L"0", L"115975", L"0"};
            EXPECT_EQ(requests[2].Fields(), reset);
        }
    }
}

}  // namespace
