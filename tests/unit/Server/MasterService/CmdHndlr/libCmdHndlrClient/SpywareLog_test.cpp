// What agents report about spyware, over real pipes, a real package library and a home folder of its own.
#include <gmock/gmock.h>

#include <future>

#include "Ask.h"
#include "CabinetBuilder.h"
#include "CapturedLog.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "ServerHome.h"
#include "SystemText.h"
#include "Text.h"
#include "cmdhl_SpywareLogDir.h"
#include "cmdhl_WtcLog.h"

namespace {

using testing::ElementsAre;
using wrb::test::FakePipeService;

constexpr char kGuid[] = "0a1b2c3d-0000-1111-2222-333344445555";

std::string Record(const std::string& name, const std::string& guid) {
    return name + std::string(129 - name.size(), '\0') + guid + std::string(37 - guid.size(), '\0');
}

class SpywareLog : public testing::Test {
  protected:
    void SetUp() override {
        m_home.Write(L"wrbscan.ini", "[GLN_FEEDBACK_SECTION]\r\nGLNFeedbackEnabled=1\r\n");
        ScanIniCache().clear();
        cmdhl_Initialize(L"", L"", nullptr);
        TakeCapturedTexts();
    }
    void TearDown() override {
        cmdhl_Finalize();
        ScanIniCache().clear();
    }

    std::wstring Package(const std::vector<std::pair<std::string, std::string>>& entries) const {
        m_home.Write(L"Upload\\package.cab", BuildCabinet(entries));
        return (m_home / L"Upload\\package.cab").wstring();
    }
    std::wstring Upload(const wchar_t* command, const std::wstring& package) const {
        return AskOn(m_pipe, command, L"uid\t" + package + L"\t" + (m_home / L"Upload\\x").wstring());
    }
    std::filesystem::path Folder(std::size_t skip) const { return m_home / (L"Upload\\x" + m_pipe.substr(skip)); }
    std::string WtcLog() const { return wrb::test::ReadAll(m_home / L"temp\\wtc.log"); }

    const wrb::test::ServerHome m_home;
    const std::wstring m_pipe = wrb::test::UniqueName(L"reply");
    const wrb::KernelHandle m_stop{CreateEventW(nullptr, TRUE, FALSE, L"Calloway_Warrenby_Server_Stop_Event")};
};

TEST_F(SpywareLog, EntriesOfALogPackageAreRecorded) {
    const FakePipeService agents(L"WrbServerNamePipe");
    std::string many = "[GeneralInfo]\r\nSectionCount=2147483647\r\nGUID=" + std::string(60, 'g') + "\r\n";
    for (int i = 0; i < 100; ++i) {
        many += "[" + std::to_string(i) + std::string(200, 'n') + "]\r\n";
    }
    const std::wstring package = Package(
        {{"a.log", std::string("[GeneralInfo]\r\nGUID=") + kGuid + "\r\nSectionCount=2\r\n[E1]\r\n[E2]\r\n[E3]"},
         {"b\\c\\many.log", many},
         {"d\\none.log", "GUID=x\r\nSectionCount=5\r\n"},
         {"d\\less.log", "[GeneralInfo]\r\nSectionCount=-2\r\n[E9]\r\n"},
         {"d\\noise.log", wrb::test::PatternBytes(5000)}});
    EXPECT_EQ(Upload(L"CMDHL_SET_SPYWARELOG", package), L"1");
    EXPECT_FALSE(std::filesystem::exists(package));
    EXPECT_TRUE(std::filesystem::exists(Folder(20) / L"b\\c\\many.log")) << "stays for the scan-log service";
    const std::string event = agents.WaitFor(1).at(0).bytes;
    EXPECT_EQ(event.substr(event.size() - 4), std::string(4, '\0'));

    const std::string log = WtcLog();
    EXPECT_TRUE(log.starts_with(Record("E1", kGuid) + Record("E2", kGuid)));
    EXPECT_EQ(log.substr(332, 166), Record("0" + std::string(127, 'n'), std::string(36, 'g')));
    // 13,998 characters hold "GeneralInfo", 10 names of 201 and 58 of 202 characters with their NULs, and a cut one.
    EXPECT_EQ(log.size() % 166, 0u);
    EXPECT_NEAR(static_cast<double>(log.size()), 166 * (2 + 69), 166);
    EXPECT_EQ(log.find("E3"), log.npos);
    EXPECT_EQ(log.find("E9"), log.npos);
}

TEST_F(SpywareLog, AFullFeedbackLogIsRenamedOnce) {
    m_home.Write(L"wrbscan.ini", "[GLN_FEEDBACK_SECTION]\r\nGLNFeedbackEnabled=1\r\nGLNFeedbackMaxSizeInK=1\r\n");
    ScanIniCache().clear();
    std::string written;
    for (int i = 0; i < 17; ++i) {
        const std::string name = "E" + std::to_string(i);
        cmdhl_AppendWtcRecord(wrb::AnsiToWide(name.c_str()).c_str(), L"guid");
        written += Record(name, "guid");
    }
    EXPECT_EQ(wrb::test::ReadAll(m_home / L"temp\\wtc.log.1"), written.substr(7 * 166, 7 * 166));
    EXPECT_EQ(WtcLog(), written.substr(14 * 166));
}

TEST_F(SpywareLog, WalkEndsAtItsLimits) {
    std::string many = "[GeneralInfo]\r\nSectionCount=9999\r\n";
    for (int i = 0; i < 2'100; ++i) {
        many += "[" + std::to_string(i) + "]\r\n";
    }
    for (const wchar_t* file : {L"a", L"b", L"c", L"d", L"e"}) {
        m_home.Write(std::wstring(L"many\\") + file, many);
    }
    m_home.Write(L"few\\a", "[GeneralInfo]\r\nSectionCount=2\r\n[E1]\r\n[E2]\r\n");
    m_home.Write(L"few\\b", "[GeneralInfo]\r\nSectionCount=2\r\n[E1]\r\n[E2]\r\n");
    m_home.Write(L"odd\\large", std::string((16 << 20) + 1, ';'));
    const std::wstring odd = (m_home / L"odd\\").wstring();
    const std::wstring deep = odd + std::wstring(260 - odd.size(), L'n');
    const wrb::FileHandle tooLong(
        CreateFileW((L"\\\\?\\" + deep).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    ASSERT_TRUE(tooLong) << GetLastError();
    // The bytes recorded and the lines logged, in the alphabet's order.
    using Result = std::pair<std::size_t, std::vector<std::wstring>>;
    wrb::Undelivered lost;
    const auto scan = [this, &lost](const wchar_t* folder) {
        std::filesystem::remove(m_home / L"temp\\wtc.log");
        lost = {};
        cmdhl_ScanSpywareLogDir((m_home / folder).string().c_str(), &lost);
        Result result(WtcLog().size(), TakeCapturedTexts());
        std::ranges::sort(result.second);
        return result;
    };
    EXPECT_EQ(scan(L"few"), Result(4 * 166, {}));
    SetEvent(m_stop.Get());
    EXPECT_EQ(scan(L"few"), Result(166, {}));
    EXPECT_EQ(lost.rows, 3u);
    ResetEvent(m_stop.Get());
    const wrb::KernelHandle mutex(CreateMutexW(nullptr, TRUE, L"wrby_wtc_mutex"));
    const std::wstring busy = L"cmdhl_AppendWtcRecord - the feedback log is busy";
    const auto dropped = [this](const std::wstring& count) {
        return L"cmdhl_ScanSpywareLogDir - " + count + L" records dropped, the feedback log was busy: " +
               (m_home / L"few").wstring();
    };
    EXPECT_EQ(std::async(std::launch::async, scan, L"few").get(),  // a thread that does not own it
              Result(0, {busy, busy, busy, busy, dropped(L"4")}));
    EXPECT_EQ(lost.rows, 4u);
    std::vector<std::wstring> texts;
    auto walk = std::async(std::launch::async, [&] { return scan(L"few").first; });
    while (texts.empty()) {
        texts = TakeCapturedTexts();
    }
    ReleaseMutex(mutex.Get());
    EXPECT_EQ(walk.get(), 3 * 166u) << "one record is lost, not the rest of the walk";
    EXPECT_EQ(scan(L"odd"), Result(0, {L"cmdhl_ScanSpywareLogDir - passed over, too large: " + odd + L"large",
                                       L"cmdhl_ScanSpywareLogDir - passed over, too long a path: " + deep}));
    SetEvent(m_stop.Get());
    EXPECT_EQ(scan(L"many").first, 166u);
    EXPECT_EQ(lost.rows, 5 * 2'100 - 1u) << "those beyond the limit, too";
    ResetEvent(m_stop.Get());
    std::filesystem::remove_all(m_home / L"temp");
    m_home.Write(L"temp", "in the way");
    EXPECT_EQ(scan(L"few").first, 0u);
    EXPECT_EQ(lost.rows, 4u) << "cannot be appended";
    std::filesystem::remove(m_home / L"temp");
    const wrb::FileHandle held(
        CreateFileW((m_home / L"few\\a").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(scan(L"few"),
              Result(2 * 166, {L"cmdhl_ScanSpywareLogDir - cannot read " + (m_home / L"few\\a").wstring() + L": " +
                               wrb::WideSystemText(ERROR_SHARING_VIOLATION)}));
    EXPECT_EQ(lost.rows, 1u);
    m_home.Write(L"wrbscan.ini", "");  // without the records: ten thousand take seconds
    ScanIniCache().clear();
    EXPECT_EQ(scan(L"many"), Result(0, {L"cmdhl_ScanSpywareLogDir - more than 10000 entries, left out from here on: " +
                                        (m_home / L"many\\e").wstring()}));
}

TEST_F(SpywareLog, ManifestAlwaysAnswersZero) {
    const FakePipeService agents(L"WrbServerNamePipe");
    const std::wstring package = Package({{"a.log", "[GeneralInfo]\r\nSectionCount=2\r\n[E1]\r\n"}});
    EXPECT_EQ(Upload(L"CMDHL_SET_SPYWARE_BACKUP_MANIFEST", package), L"0");
    EXPECT_TRUE(std::filesystem::exists(Folder(33) / L"a.log"));
    const std::string event = agents.WaitFor(1).at(0).bytes;
    EXPECT_EQ(event.substr(event.size() - 4), std::string("\x02\0\0\0", 4));
    EXPECT_EQ(WtcLog(), "");
}

TEST_F(SpywareLog, UploadThatFailsLeavesNothingBehind) {
    const std::wstring package = Package({{"a.log", "x"}});
    std::filesystem::create_directory(Folder(20));
    EXPECT_EQ(Upload(L"CMDHL_SET_SPYWARELOG", package), L"0") << "another's folder";
    EXPECT_FALSE(std::filesystem::exists(package));
    EXPECT_THAT(TakeCapturedTexts(),
                ElementsAre(L"cmdhl_SetSpywareLog: UID=uid, FileName=" + package + L", Dir=" +
                                (m_home / L"Upload\\x").wstring(),
                            L"cmdhl_SetSpywareLog: CreateDirectory(" + Folder(20).wstring() + L") fail err=183"));
    m_home.Write(L"Upload\\package.cab", "no cabinet");
    EXPECT_EQ(Upload(L"CMDHL_SET_SPYWARE_BACKUP_MANIFEST", package), L"0");
    EXPECT_FALSE(std::filesystem::exists(package));
    EXPECT_FALSE(std::filesystem::exists(Folder(33)));
    EXPECT_EQ(TakeCapturedTexts().back(), L"cmdhl_SetSpywareBackupManifest: fpkExtract fail.");

    m_home.Write(L"Upload\\package.cab", "kept");
    EXPECT_THROW(Tell(L"CMDHL_SET_SPYWARELOG\tnineteen-characters\tuid\t" + package + L"\tx"), std::out_of_range);
    EXPECT_TRUE(std::filesystem::exists(package));
}

TEST_F(SpywareLog, FeedbackRecordsAreFixedFieldsInTextMode) {
    Tell(L"CMDHL_ADD_WTC_LOG\tname\n\tguid");
    Tell(L"CMDHL_ADD_WTC_LOG\t" + std::wstring(500, L'x') + L"\t" + std::wstring(50, L'y'));
    Tell(L"CMDHL_ADD_WTC_LOG");
    EXPECT_EQ(WtcLog(), "name\r\n" + Record("name\n", "guid").substr(5) +
                            Record(std::string(128, 'x'), std::string(36, 'y')) + Record("", ""));
    m_home.Write(L"wrbscan.ini", "");
    ScanIniCache().clear();
    Tell(L"CMDHL_ADD_WTC_LOG\tname\tguid");
    EXPECT_EQ(WtcLog().size(), 3 * 166u + 1) << "feedback is off";
}

TEST_F(SpywareLog, RestoreLogTurnsItsNumbersRound) {
    EXPECT_EQ(Ask(L"CMDHL_SET_SPYWARE_RESTORE_LOG", L"uid\t1\t-2"), L"1") << "whatever became of it";
    EXPECT_EQ(TakeCapturedTexts().back(),
              L"cmdhl_SetSpywareRestoreLog - not handed over: 1 log rows, 0 events, uid=uid");
    const FakePipeService pool(L"Global\\LogPoolCommandManager");
    EXPECT_EQ(Ask(L"CMDHL_SET_SPYWARE_RESTORE_LOG", L"uid\t1\t-2"), L"1");
    const std::wstring row = pool.WaitFor(1).at(0).Text();
    EXPECT_NE(row.find(L"\"LOG_TYPE\":-2"), row.npos) << wrb::WideToUtf8(row);
    EXPECT_NE(row.find(L"\"RESULT\":1"), row.npos);
}

TEST_F(SpywareLog, StatusFlagsNeedAWholeUid) {
    const std::wstring uid(36, L'u');
    Tell(L"CMDHL_SET_STATFLAG\t" + uid.substr(1) + L"\t1\t2");
    EXPECT_THAT(TakeCapturedTexts(), ElementsAre(L"cmdhl_SetStatusFlag:Uid length incorrent"));
    Tell(L"CMDHL_SET_STATFLAG\t" + uid + L"\t4294967295\t16");
    EXPECT_EQ(TakeCapturedTexts().back(), L"cmdhl_SetStatusFlag:dbSetStatus fail " + uid + L", ffffffff,10");
    const wrb::test::FakeDbService database;
    Tell(L"CMDHL_SET_STATFLAG\t" + uid + L"\t4294967295\t16");
    EXPECT_THAT(database.WaitFor(1).at(0).Fields(),
                ElementsAre(L"DB_SET_STATUS", L"-1", uid, L"4294967295", L"16", L"0"));
}

}  // namespace
