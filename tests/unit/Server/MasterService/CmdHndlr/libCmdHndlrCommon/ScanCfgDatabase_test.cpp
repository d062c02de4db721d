// The getters of one group, against a database server that answers as a test says.
#include <gtest/gtest.h>

#include <map>

#include "CapturedLog.h"
#include "ExpectedScanSections.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "IniFile.h"
#include "cmdhm_ScanCfg.h"

namespace {

using wrb::ScanGroupKind;
using wrb::ScanType;
using wrb::test::ExpectedScanSections;
using wrb::test::tagDbRequest;
using wrb::test::tagExpectedSection;

constexpr const wchar_t* kUid = L"12345678-1234-1234-1234-123456789abc";

// Command to answer; a command that is missing here is one of an agent that the server does not know.
using Answers = std::map<std::wstring, std::wstring>;

class CAnsweringDb {
  public:
    explicit CAnsweringDb(Answers answers)
        : m_service([answers = std::move(answers)](const tagDbRequest& request) -> std::optional<std::string> {
              const auto answer = answers.find(request.Fields()[0]);
              return answer == answers.end() ? std::string() : wrb::test::WideBytes(answer->second);
          }) {}

    // "NAME uid number ..." of each request, once there are `count`; the reply id left out.
    std::vector<std::wstring> Requests(std::size_t count) const {
        std::vector<std::wstring> all;
        for (const tagDbRequest& request : m_service.WaitFor(count)) {
            std::vector<std::wstring> fields = request.Fields();
            fields.erase(fields.begin() + 1);
            std::wstring& line = all.emplace_back();
            for (const std::wstring& field : fields) {
                line += (line.empty() ? L"" : L" ") + field;
            }
        }
        return all;
    }

  private:
    wrb::test::CFakeDbService m_service;
};

std::vector<std::wstring> LoggedLines(const wchar_t* start) {
    std::vector<std::wstring> lines;
    for (const tagCapturedLine& line : TakeCapturedLog()) {
        if (line.text.starts_with(start)) {
            EXPECT_EQ(line.level, 8u);
            lines.push_back(line.text);
        }
    }
    return lines;
}

struct tagGroupCase {
    bool (*get)(tagScanGroupValues&, const wchar_t*, bool);
    bool (*getAndExport)(std::wstring&, const wchar_t*, bool);
    const wchar_t* command;
    const wchar_t* bit;
    const wchar_t* logStart;
};

// In the order of ExpectedScanSections.
constexpr tagGroupCase kGroups[] = {
    {cmdhm_GetMSCfg, cmdhm_GetAndExportMSCfg, L"DB_GET_MSCF", L"1", L"get ms:["},
    {cmdhm_GetRTCfg, cmdhm_GetAndExportRTCfg, L"DB_GET_RTCF", L"2", L"get rt:["},
    {cmdhm_GetPSCfg, cmdhm_GetAndExportPSCfg, L"DB_GET_PSCF", L"4", L"get ps:["},
    {cmdhm_GetSNCfg, cmdhm_GetAndExportSNCfg, L"DB_GET_SNCF", L"1024", L"get sn:["},
    {cmdhm_GetMSCfgEx, cmdhm_GetAndExportMSCfgEx, L"DB_GET_MSCF", L"256", L"get msex:["},
    {cmdhm_GetRTCfgEx, cmdhm_GetAndExportRTCfgEx, L"DB_GET_RTCF", L"16384", L"get rtex:["},
    {cmdhm_GetPSCfgEx, cmdhm_GetAndExportPSCfgEx, L"DB_GET_PSCF", L"32768", L"get psex:["},
    {cmdhm_GetSNCfgEx, cmdhm_GetAndExportSNCfgEx, L"DB_GET_SNCF", L"65536", L"get snex:["},
    {cmdhm_GetSpyMSCfg, cmdhm_GetAndExportSpyMSCfg, L"DB_GET_SPYWARE_MSCF", L"1", L"[cmdhm_GetSpyMSCfg]"},
    {cmdhm_GetSpyRTCfg, cmdhm_GetAndExportSpyRTCfg, L"DB_GET_SPYWARE_RTCF", L"2", L"[cmdhm_GetSpyRTCfg]"},
    {cmdhm_GetSpyPSCfg, cmdhm_GetAndExportSpyPSCfg, L"DB_GET_SPYWARE_PSCF", L"4", L"[cmdhm_GetSpyPSCfg]"},
    {cmdhm_GetSpySNCfg, cmdhm_GetAndExportSpySNCfg, L"DB_GET_SPYWARE_SNCF", L"1024", L"[cmdhm_GetSpySNCfg]"},
};

// What the database holds for the group, as it answers, and the values that come of it.
struct tagStored {
    Answers answers;
    tagScanGroupValues values;
    std::vector<std::wstring> logged;  // behind the start of each line
};

tagStored Stored(const tagGroupCase& group, const tagExpectedSection& section) {
    tagStored stored;
    const std::wstring who = std::wstring(section.kind == ScanGroupKind::Spyware ? L"[" : L"") + kUid;
    stored.values.flags = 0x89ABCDEF;
    std::wstring& numbers = stored.answers[group.command];
    numbers = L"-1985229329";  // the flags as a signed number
    if (section.kind == ScanGroupKind::Spyware) {
        stored.logged.push_back(who + L"][89abcdef]");
        if (section.type != ScanType::RT) {
            numbers += L"\tMP3;AVI";
            stored.values.excludeFileExtList = L"MP3;AVI";
            stored.logged.push_back(L"[Exclusion - file extension list:MP3;AVI]");
        }
        return stored;
    }
    const bool scheduled = section.type == ScanType::PS;
    numbers += scheduled ? L"\t21\t-3\t4\t1\t2\t3\t4\t5\t6\t7\t8" : L"\t21\t-3\t4";
    std::wstring& texts = stored.answers[L"DB_GET_EXTRA"];
    if (section.kind == ScanGroupKind::Exclusion) {
        texts = L"C:\\a\tb.txt\t.log";
        stored.values.excludedFolder = L"C:\\a";
        stored.values.excludedFile = L"b.txt";
        stored.values.excludedExt = L".log";
        stored.logged.push_back(who + L"][89abcdef][C:\\a][b.txt][.log]");
        return stored;
    }
    texts = L".EXE\tC:\\move\tunused\tunused\tCVE_Exploit-5-4;Joke-1-2\tspare";
    tagScanGroupValues& values = stored.values;
    values.compressedLayer = 21;
    values.oleLayer = 0xFFFFFFFD;
    values.possibleVirusCustActInActiveAct = 4;
    if (scheduled) {
        uint32_t number = 0;
        for (uint32_t* member : {&values.frequency, &values.hour, &values.minute, &values.amPm, &values.dayOfMonth,
                                 &values.dayOfWeek, &values.weekOrdinalOfMonth, &values.weekdayOfMonth}) {
            *member = ++number;
        }
    }
    values.extList = L".EXE";
    values.moveDir = values.cleanFailedMoveDir = L"C:\\move";
    values.custAction = L"CVE_Exploit-5-4;Joke-1-2;Universe-5";  // completed
    stored.logged.push_back(who + L"][89abcdef][21][-3][4]" + (scheduled ? L"[1][2][3][4][5][6][7][8]" : L"") +
                            L"[.EXE][C:\\move][C:\\move][" + values.custAction + L"]");
    return stored;
}

class ScanCfgDatabase : public testing::Test {
  protected:
    void SetUp() override {
        ScanIniCache().clear();
        ScanIniCache().init(m_ini.Path().c_str(), 6);
    }

    CIniFile m_ini{L"[INI_MAJOR_VIRUS_TYPE_SECTION]\nCount=1\nName_000=Joke\n1st_Act_000=9\n1st_Act_Universe=5\n"};
};

TEST_F(ScanCfgDatabase, AGroupIsAskedForRenderedLoggedAndResetAsItShouldBe) {
    for (std::size_t i = 0; i < std::size(kGroups); ++i) {
        SCOPED_TRACE(i);
        const tagGroupCase& group = kGroups[i];
        const tagStored stored = Stored(group, ExpectedScanSections()[i]);
        const bool hasTexts = stored.answers.size() > 1;
        const CAnsweringDb db(stored.answers);
        TakeCapturedLog();

        std::wstring out = L"old";
        EXPECT_TRUE(group.getAndExport(out, kUid, false));
        std::wstring section = ExpectedScanSections()[i].Text(kUid, stored.values);
        if (i == 1) {  // real time takes the exploit action out
            section.replace(section.find(L"CVE_Exploit"), stored.values.custAction.size(),
                            L"Joke-1-2;Universe-5\nCustActionCve=CVE_Exploit-5-4");
        }
        EXPECT_EQ(out, section);

        std::vector<std::wstring> lines = LoggedLines(group.logStart);
        for (std::wstring& line : lines) {
            line.erase(0, std::wstring_view(group.logStart).size());
        }
        EXPECT_EQ(lines, stored.logged);

        std::vector<std::wstring> expected{std::wstring(group.command) + L" " + kUid + L" 0"};
        if (hasTexts) {
            expected.push_back(std::wstring(L"DB_GET_EXTRA ") + kUid + L" " + group.bit);
        }
        EXPECT_EQ(db.Requests(expected.size()), expected) << "no more requests than these";

        tagScanGroupValues values;
        EXPECT_TRUE(group.get(values, kUid, true));
        EXPECT_EQ(values, stored.values);
        const std::vector<std::wstring> once = expected;
        expected.insert(expected.end(), once.begin(), once.end());
        expected.push_back(std::wstring(L"DB_SET_CONF_FLAG ") + kUid + L" 0 " + group.bit + L" 0");
        EXPECT_EQ(db.Requests(expected.size()), expected);
    }
}

// The bit is cleared once both answers are there, also when the second one is empty.
TEST_F(ScanCfgDatabase, WithoutOneOfTheAnswersTheSectionIsEmpty) {
    for (std::size_t i = 0; i < std::size(kGroups); ++i) {
        SCOPED_TRACE(i);
        const Answers whole = Stored(kGroups[i], ExpectedScanSections()[i]).answers;
        for (const auto& missing : whole) {
            Answers answers = whole;
            answers.erase(missing.first);
            const CAnsweringDb db(answers);
            std::wstring out = L"old";
            EXPECT_FALSE(kGroups[i].getAndExport(out, kUid, true));
            EXPECT_EQ(out, L"");
            EXPECT_EQ(db.Requests(missing.first == L"DB_GET_EXTRA" ? 3 : 1).size(),
                      missing.first == L"DB_GET_EXTRA" ? 3u : 1u);
        }
    }
}

TEST_F(ScanCfgDatabase, GarbageReadsAsZeroAndMissingFieldsAsEmpty) {
    const CAnsweringDb db(Answers{{L"DB_GET_PSCF", L"x\t 7y\t\t99999999999\t-1"}, {L"DB_GET_EXTRA", L"only this"}});
    tagScanGroupValues values;
    values.custAction = L"old";
    EXPECT_TRUE(cmdhm_GetPSCfg(values, kUid, false));
    tagScanGroupValues expected;
    expected.compressedLayer = 7;
    expected.possibleVirusCustActInActiveAct = 2147483647;
    expected.frequency = 0xFFFFFFFF;
    expected.extList = L"only this";
    expected.custAction = L"Joke-9;Universe-5";
    EXPECT_EQ(values, expected);
}

TEST_F(ScanCfgDatabase, AUidIsCutTo36Characters) {
    const CAnsweringDb db(Answers{{L"DB_GET_SPYWARE_RTCF", L"1"}});
    std::wstring out;
    EXPECT_TRUE(cmdhm_GetAndExportSpyRTCfg(out, (std::wstring(kUid) + L"more").c_str(), true));
    EXPECT_NE(out.find(std::wstring(L"UID=") + kUid + L"\n"), out.npos);
    for (const std::wstring& request : db.Requests(2)) {
        EXPECT_NE(request.find(std::wstring(L" ") + kUid + L" 0"), request.npos);
    }
}

TEST_F(ScanCfgDatabase, RestoreSessionsAreNumberedUpToTheFirstEmptyOne) {
    const struct {
        const wchar_t* answer;
        const wchar_t* section;
    } rows[] = {
        {L"", L""},
        {L"\tnever", L"[Spyware Restore Session]\nRestoreSessionCount = 0\n"},
        {L"one", L"[Spyware Restore Session]\nRestoreSession_0 = one\nRestoreSessionCount = 1\n"},
        {L"one\ttwo = 2\t\tnever",
         L"[Spyware Restore Session]\nRestoreSession_0 = one\nRestoreSession_1 = two = 2\nRestoreSessionCount = 2\n"},
    };
    for (const auto& row : rows) {
        const CAnsweringDb db(Answers{{L"DB_GET_BACKUP_LOG_ALL_SESSIONS", row.answer}});
        TakeCapturedLog();
        std::wstring out = L"old";
        EXPECT_EQ(cmdhm_GetSpyRestoreList(out, kUid), *row.section != L'\0');
        EXPECT_EQ(out, row.section);
        const auto lines = LoggedLines(L"[cmdhm_GetSpyRestoreList]");
        ASSERT_EQ(lines.size(), out.empty() ? 0u : 1u);
        if (!out.empty()) {
            EXPECT_EQ(lines[0], L"[cmdhm_GetSpyRestoreList] [" + out + L"]");
        }
        EXPECT_EQ(db.Requests(1), std::vector{std::wstring(L"DB_GET_BACKUP_LOG_ALL_SESSIONS ") + kUid + L" 0"});
    }
}

}  // namespace
