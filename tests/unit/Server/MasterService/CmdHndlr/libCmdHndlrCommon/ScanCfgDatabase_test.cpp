// The getters of one group, against a database server that answers as a test says.
#include <gtest/gtest.h>

#include <map>

#include "ExpectedScanSections.h"
#include "RequestLines.h"
#include "ScanIni.h"
#include "cmdhm_ScanCfg.h"

namespace {

using wrb::ScanGroupKind;
using wrb::ScanType;
using wrb::test::ExpectedScanSections;
using wrb::test::tagDbRequest;
using wrb::test::tagExpectedSection;

constexpr wchar_t kIni[] =
    L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=1\nName_000=Joke\n1st_Act_000=9\n1st_Act_Universe=5\n";
constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";

// Command to answer; a command that is missing here is one of an agent that the server does not know.
using Answers = std::map<std::wstring, std::wstring>;

auto Answering(const Answers& answers) {
    return [answers](const tagDbRequest& request) -> std::optional<std::string> {
        const auto answer = answers.find(request.Fields()[0]);
        return answer == answers.end() ? std::string() : wrb::test::WideBytes(answer->second);
    };
}

// In the order of ExpectedScanSections.
constexpr struct tagGroupCase {
    bool (*getAndExport)(std::wstring&, const wchar_t*, bool);
    const wchar_t* command;
    const wchar_t* bit;
} kGroups[] = {
    {cmdhm_GetAndExportMSCfg, L"DB_GET_MSCF", L"1"},
    {cmdhm_GetAndExportRTCfg, L"DB_GET_RTCF", L"2"},
    {cmdhm_GetAndExportPSCfg, L"DB_GET_PSCF", L"4"},
    {cmdhm_GetAndExportSNCfg, L"DB_GET_SNCF", L"1024"},
    {cmdhm_GetAndExportMSCfgEx, L"DB_GET_MSCF", L"256"},
    {cmdhm_GetAndExportRTCfgEx, L"DB_GET_RTCF", L"16384"},
    {cmdhm_GetAndExportPSCfgEx, L"DB_GET_PSCF", L"32768"},
    {cmdhm_GetAndExportSNCfgEx, L"DB_GET_SNCF", L"65536"},
    {cmdhm_GetAndExportSpyMSCfg, L"DB_GET_SPYWARE_MSCF", L"1"},
    {cmdhm_GetAndExportSpyRTCfg, L"DB_GET_SPYWARE_RTCF", L"2"},
    {cmdhm_GetAndExportSpyPSCfg, L"DB_GET_SPYWARE_PSCF", L"4"},
    {cmdhm_GetAndExportSpySNCfg, L"DB_GET_SPYWARE_SNCF", L"1024"},
};

// What the database answers about a group. Fields behind the last one that the group has are ignored.
Answers StoredAnswers(const tagGroupCase& group, ScanGroupKind kind) {
    if (kind == ScanGroupKind::Spyware) {
        return {{group.command, L"-1985229329\tMP3;AVI"}};
    }
    return {{group.command, L"-1985229329\t21\t-3\t4\t1\t2\t3\t4\t5\t6\t7\t8"},
            {L"DB_GET_EXTRA", kind == ScanGroupKind::Main
                                  ? L".EXE\tC:\\move\tunused\tunused\tCVE_Exploit-5-4;Joke-1-2\tspare"
                                  : L"C:\\a\tb.txt\t.log"}};
}

// The values that come of it: no two groups read different ones for the same member.
tagScanGroupValues StoredValues() {
    tagScanGroupValues values{0x89ABCDEF, 21, 0xFFFFFFFD, 4, 1, 2, 3, 4, 5, 6, 7, 8, {}, {}, {}, {}, {}, {}, {}, {}};
    values.extList = L".EXE";
    values.moveDir = values.cleanFailedMoveDir = L"C:\\move";
    values.custAction = L"CVE_Exploit-5-4;Joke-1-2;Universe-5";  // completed
    values.excludedFolder = L"C:\\a";
    values.excludedFile = L"b.txt";
    values.excludedExt = L".log";
    values.excludeFileExtList = L"MP3;AVI";
    return values;
}

std::wstring StoredSection(const tagExpectedSection& section) {
    std::wstring text = section.Text(kUid, StoredValues());
    if (section.type == ScanType::RT && section.kind == ScanGroupKind::Main) {
        const std::wstring whole = StoredValues().custAction;
        text.replace(text.find(whole), whole.size(), L"Joke-1-2;Universe-5\nCustActionCve=CVE_Exploit-5-4");
    }
    return text;
}

// The bit is cleared once both answers are there, also when the second one is empty.
TEST(ScanCfgDatabase, AGroupIsAskedForRenderedAndResetAndEmptyWithoutOneOfItsAnswers) {
    const CScanIni ini(kIni);
    std::wstring out = L"old";
    for (std::size_t i = 0; i < std::size(kGroups); ++i) {
        SCOPED_TRACE(i);
        const tagExpectedSection& section = ExpectedScanSections()[i];
        const std::wstring agent = std::wstring(L"|") + kUid + L"|";
        std::vector<std::wstring> requests{kGroups[i].command + agent + L"0"};
        if (section.kind != ScanGroupKind::Spyware) {
            requests.push_back(L"DB_GET_EXTRA" + agent + kGroups[i].bit);
        }
        const Answers whole = StoredAnswers(kGroups[i], section.kind);
        for (const bool reset : {false, true}) {
            if (reset) {
                requests.push_back(L"DB_SET_CONF_FLAG" + agent + L"0|" + kGroups[i].bit + L"|0");
            }
            const wrb::test::CFakeDbService db(Answering(whole));
            EXPECT_TRUE(kGroups[i].getAndExport(out, kUid, reset));
            EXPECT_EQ(out, StoredSection(section));
            EXPECT_EQ(RequestLines(db, requests.size()), requests);
        }
        for (const auto& missing : whole) {
            Answers answers = whole;
            answers.erase(missing.first);
            const wrb::test::CFakeDbService db(Answering(answers));
            EXPECT_FALSE(kGroups[i].getAndExport(out, kUid, true));
            EXPECT_EQ(out, L"");
            EXPECT_EQ(RequestLines(db, 1).size() == 1, missing.first != L"DB_GET_EXTRA");
        }
    }
}

TEST(ScanCfgDatabase, GarbageReadsAsZeroMissingFieldsAsEmptyAndALongUidIsCut) {
    const CScanIni ini(kIni);
    const wrb::test::CFakeDbService db(
        Answering(Answers{{L"DB_GET_PSCF", L"x\t 7y\t\t99999999999\t-1"}, {L"DB_GET_EXTRA", L"only this"}}));
    tagScanGroupValues values = StoredValues();
    EXPECT_TRUE(cmdhm_GetPSCfg(values, (std::wstring(kUid) + L"more").c_str(), false));
    tagScanGroupValues expected;
    expected.compressedLayer = 7;
    expected.possibleVirusCustActInActiveAct = 2147483647;
    expected.frequency = 0xFFFFFFFF;
    expected.extList = L"only this";
    expected.custAction = L"Joke-9;Universe-5";
    EXPECT_EQ(values, expected);
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
        const wrb::test::CFakeDbService db(Answering(Answers{{L"DB_GET_BACKUP_LOG_ALL_SESSIONS", answer}}));
        std::wstring out = L"old";
        EXPECT_EQ(cmdhm_GetSpyRestoreList(out, kUid), *section != L'\0');
        EXPECT_EQ(out, section);
    }
}

}  // namespace
