// The firewall-log commands through the entry point, over real pipes and the real package library.
#include <algorithm>
#include <array>
#include <cwchar>

#include "Ask.h"
#include "CabinetBuilder.h"
#include "CabinetWriter.h"
#include "CapturedLog.h"
#include "DebugLog.h"
#include "FakeDbService.h"
#include "FirewallLogs.h"
#include "INICache.h"
#include "PfwLogSample.h"
#include "ServerHome.h"
#include "Text.h"
#include "UploadPackage.h"
#include "WrbPfwCommon.h"
#include "cmdhl_LogTicket.h"

namespace {

using wrb::test::FakePipeService;

class FirewallUpload : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directory(m_folder);
        m_home.Write(L"wrbscan.ini",
                     "[Global Setting]\r\nEnablePFWLogUploadingTicket=1\r\n[Firewall Alert]\r\nEnable=1\r\n");
        m_home.Write(L"Private\\wrbserver.ini",
                     "[LOG_TICKET_SECTION]\r\nNumberOfConcurrentLogUploadingClient=1\r\n"
                     "NumberOfMaxConcurrentLogUploadingClient=1\r\n"
                     "[INI_SERVER_SECTION]\r\nCFWLogQueryCondition=type=1;days=7\r\n");
        cmdhl_Initialize(L"", L"", nullptr);
        TakeCapturedLog();
    }
    void TearDown() override { cmdhl_Finalize(); }

    static int32_t AskForPlace(const std::wstring& uid) {
        int32_t seconds = -1;
        EXPECT_TRUE(cmdhl_RequestToUploadPFWLog(uid, seconds));
        return seconds;
    }

    // Uploads the file "package" of the folder for "uid", and returns the answer.
    std::wstring Upload(const std::wstring& logType, const std::wstring& replyPipe = wrb::test::UniqueName(L"reply")) {
        return AskOn(
            replyPipe, L"CMDHL_PFW_SET_LOG",
            L"uid\t" + (m_folder / L"package").wstring() + L"\t" + (m_folder / L"dir-").wstring() + L"\t" + logType);
    }

    void WritePackage(const std::string& bytes) { wrb::test::WriteAll(m_folder / L"package", bytes); }

    bool IsFolderEmpty() { return std::filesystem::is_empty(m_folder); }

    wrb::test::ServerHome m_home;
    const std::filesystem::path m_folder = m_home / L"Upload";
    FakePipeService m_agent{L"QMAgentServerNamePipe"};
    FakePipeService m_pool{L"Global\\LogPoolCommandManager"};
    const std::string m_log = wrb::test::BytesOf(wrb::test::SampleRecord<SWRB_PFW_LOG_ITEM>());
};

// What else a package can be is up to its library, which writes nothing then.
TEST_F(FirewallUpload, LeavesNothingBehindWhateverThePackageIs) {
    const std::string good = BuildCabinet({{"a.log", m_log}, {"sub\\deep\\b.log", m_log}, {"empty", ""}});
    const struct {
        const char* what;
        std::string package;
        const wchar_t* logType;
        const wchar_t* answer;
        std::size_t records;
        const wchar_t* line;
    } cases[] = {
        {"good", good, L"1", L"1", 2, L"processCFWLogFile:final log version(0)"},
        {"other type", good, L"2", L"1", 0, L"cmdhl_SetCFWLog: unknown log type"},
        {"no type", good, L"", L"1", 0, L"cmdhl_SetCFWLog: unknown log type"},
        {"not a cabinet", wrb::test::PatternBytes(5000), L"1", L"0", 0, L"cmdhl_SetCFWLog: fpkExtract fail"},
        {"cut", good.substr(0, good.size() - 1), L"1", L"0", 0, L"cmdhl_SetCFWLog: fpkExtract fail"},
    };
    std::size_t records = 0;
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        WritePackage(row.package);
        EXPECT_EQ(AskForPlace(L"uid"), 0);
        EXPECT_GT(AskForPlace(L"other"), 0) << "the only place is taken";
        TakeCapturedLog();
        EXPECT_EQ(Upload(row.logType), row.answer);
        EXPECT_TRUE(IsFolderEmpty());
        records += row.records;
        EXPECT_EQ(m_agent.WaitFor(records).size(), records);
        EXPECT_EQ(m_pool.WaitFor(records).size(), records);
        EXPECT_EQ(std::ranges::count(TakeCapturedLog(), row.line, &CapturedLine::text), 1);
        EXPECT_EQ(AskForPlace(L"other"), 0) << "and free again";
        cmdhl_RemoveClientFromLogUploadingList(L"other");
    }
}

TEST_F(FirewallUpload, MoreThanTenThousandEntriesAreRefused) {
    m_home.Write(L"record", "x");
    std::vector<wrb::CabinetSource> sources(10'001, {"", (m_home / L"record").wstring()});
    for (std::size_t i = 0; i < sources.size(); ++i) {
        sources[i].name = std::to_string(i);
    }
    wrb::WriteCabinet((m_folder / L"package").wstring(), sources);
    EXPECT_EQ(Upload(L"1"), L"0");
    EXPECT_TRUE(IsFolderEmpty());
}

// The log lines of one upload, in their order.
TEST_F(FirewallUpload, SaysWhatFails) {
    const std::wstring pipe = wrb::test::UniqueName(L"reply");
    const std::wstring package = (m_folder / L"package").wstring();
    const std::wstring base = (m_folder / L"dir-").wstring();
    const std::filesystem::path folder = base + pipe.substr(17);
    std::filesystem::create_directory(folder);
    wrb::test::WriteAll(folder / L"mine", "");
    EXPECT_EQ(Upload(L"7", pipe), L"0");
    EXPECT_TRUE(std::filesystem::exists(folder / L"mine"));
    std::vector<CapturedLine> lines = TakeCapturedLog();
    lines.resize(std::min<std::size_t>(lines.size(), 5));
    EXPECT_EQ(lines, (std::vector<CapturedLine>{
                         {8, L"cmdhl_SetCFWLog: UID=uid, FileName=" + package + L", Dir=" + base + L", nLogType=7"},
                         {8, L"cmdhl_SetCFWLog: CreateDirectory(" + folder.wstring() + L") fail err=183"},
                         {8, L"cmdhl_SetCFWLog: unknown log type"},
                         {8, L"cmdhl_SetCFWLog: DeleteFile(" + package + L") fail err=2"},
                         {8, L"cmdhl_SetCFWLog: RemoveDirectory(" + folder.wstring() + L") fail err=145"}}));
}

// A package or folder elsewhere: answered 0, one line, nothing deleted, nothing made. "~" is the home folder, "^"
// another one. A package that is taken is deleted, as it is no cabinet.
TEST_F(FirewallUpload, OnlyFoldersForUploadsAreOpen) {
    const wrb::test::TempFolder outside;
    const auto full = [&](const std::wstring& text) {
        std::wstring path;
        for (const wchar_t character : text) {
            character == L'~'   ? path.append(m_home / L"")
            : character == L'^' ? path.append(outside / L"")
                                : path.append(1, character);
        }
        return path;
    };
    const wchar_t* const kNoPath = L"no path on a local drive";
    const wchar_t* const kElsewhere = L"in no folder for uploads";
    const struct {
        const wchar_t* package;
        const wchar_t* base;
        const wchar_t* list;
        const wchar_t* reason;
        bool isFolder = false;  // the folder is refused
    } cases[] = {{L"~Upload\\sub\\..\\PACKAGE", L"~Upload\\dir-", L"", nullptr},
                 {L"~upload/package", L"~Upload/dir-", L"", nullptr},
                 {L"^package", L"^dir-", L"^", nullptr},
                 {L"^package", L"^dir-", L"\\\\host\\share;none;^..;", nullptr},
                 {L"^package", L"^dir-", L"*", nullptr},
                 {L"^package", L"^dir-", L"^package", kElsewhere},
                 {L"^package", L"^dir-", L"^none;", kElsewhere},
                 {L"~Private\\wrbserver.ini", L"~Upload\\dir-", L"*", kElsewhere},
                 {L"~Upload\\..\\Private\\wrbserver.ini", L"~Upload\\dir-", L"*;~;~Private", kElsewhere},
                 {L"~Uploads\\package", L"~Upload\\dir-", L"~Uploads", kElsewhere},
                 {L"~Upload\\package", L"~Private\\dir-", L"*", kElsewhere, true},
                 {L"~Upload\\package", L"~Upload\\..\\dir-", L"*", kElsewhere, true},
                 {L"~Upload\\package", L"^dir-", L"", kElsewhere, true},
                 {L"~Upload\\package", L"~Upload\\NUL\\dir-", L"", kNoPath, true},
                 {L"~Upload\\package", L"\\\\.\\pipe\\dir-", L"*", kNoPath, true},
                 {L"\\\\.\\pipe\\package", L"~Upload\\dir-", L"*", kNoPath},
                 {L"\\\\127.0.0.1\\C$\\package", L"~Upload\\dir-", L"*", kNoPath},
                 {L"package", L"~Upload\\dir-", L"*", kNoPath},
                 {L"~Upload\\package::$DATA", L"~Upload\\dir-", L"*", kNoPath}};
    for (const auto& row : cases) {
        SCOPED_TRACE(wrb::WideToUtf8(std::wstring(row.package) + L" " + row.base + L" " + row.list));
        ServerIniCache().writeINIString(L"INI_SERVER_SECTION", L"UploadFolders", full(row.list).c_str());
        for (const wchar_t* file : {L"~Upload\\package", L"~Uploads\\package", L"~Upload\\sub\\empty", L"^package"}) {
            std::filesystem::create_directories(std::filesystem::path(full(file)).parent_path());
            wrb::test::WriteAll(full(file), "no cabinet");
        }
        const std::wstring package = full(row.package);
        const std::wstring base = full(row.base);
        const std::wstring pipe = wrb::test::UniqueName(L"reply");
        TakeCapturedLog();
        EXPECT_EQ(AskOn(pipe, L"CMDHL_PFW_SET_LOG", L"uid\t" + package + L"\t" + base + L"\t1"), L"0");
        const std::vector<CapturedLine> lines = TakeCapturedLog();
        if (row.reason == nullptr) {
            EXPECT_FALSE(std::filesystem::exists(package));
            EXPECT_EQ(std::ranges::count(lines, kLogWarning, &CapturedLine::level), 0);
        } else {
            const std::wstring what = row.isFolder ? base + pipe.substr(17) : package;
            EXPECT_EQ(std::ranges::count(lines, CapturedLine{kLogWarning, std::wstring(L"cmdhl_SetCFWLog - refused, ") +
                                                                              row.reason + L": " + what}),
                      1);
            EXPECT_TRUE(std::filesystem::exists(full(row.isFolder ? L"~Upload\\package" : L"^package")));
            EXPECT_TRUE(std::filesystem::exists(m_home / L"Private\\wrbserver.ini"));
        }
        EXPECT_FALSE(std::filesystem::exists(base + pipe.substr(17)));
    }
}

TEST_F(FirewallUpload, ALinkOutOfTheFolderIsRefused) {
    const wrb::test::TempFolder outside;
    const std::string package = BuildCabinet({{"a.log", m_log}});
    wrb::test::WriteAll(outside / L"package", package);
    const std::filesystem::path folder = m_folder / L"folder";
    const std::filesystem::path file = m_folder / L"package";
    CreateSymbolicLinkW(folder.c_str(), outside.Path().c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY);
    CreateSymbolicLinkW(file.c_str(), (outside / L"package").c_str(), 0);
    const auto isLink = [](const std::filesystem::path& path) {
        const DWORD attributes = GetFileAttributesW(path.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    };
    if (!isLink(folder) || !isLink(file)) {
        GTEST_SKIP() << "this system, or this account, makes no links";
    }
    EXPECT_EQ(wrb::OpenUploadedPackage(file).refusal, std::wstring(L"a link"));
    EXPECT_EQ(wrb::OpenUploadedPackage(folder / L"package").refusal, std::wstring(L"in no folder for uploads"));
    EXPECT_EQ(wrb::MakeUploadFolder(folder).refusal, std::wstring(L"a link"));
    EXPECT_EQ(wrb::MakeUploadFolder(folder / L"unpacked").refusal, std::wstring(L"in no folder for uploads"));
    EXPECT_EQ(wrb::test::ReadAll(outside / L"package"), package);
    RemoveDirectoryW(folder.c_str());
}

TEST_F(FirewallUpload, WhatIsOpenIsNeitherReplacedNorRemoved) {
    WritePackage(m_log);
    wrb::UploadPackage package(L"test", m_folder / L"package", m_folder / L"unpacked");
    EXPECT_FALSE(package.IsRefused());
    for (const wchar_t* name : {L"package", L"unpacked"}) {
        EXPECT_FALSE(MoveFileW((m_folder / name).c_str(), (m_folder / L"other").c_str()));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION}) << name;
    }
    const wrb::FileHandle writer(CreateFileW((m_folder / L"package").c_str(), GENERIC_WRITE, 7, nullptr, OPEN_EXISTING,
                                             FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_FALSE(writer);
    EXPECT_EQ(package.Delete() + package.RemoveFolder(), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(IsFolderEmpty());
}

TEST_F(FirewallUpload, AShortReplyPipeEndsTheRequestWhereItStands) {
    WritePackage(BuildCabinet({{"a.log", m_log}}));
    EXPECT_EQ(AskForPlace(L"uid"), 0);
    EXPECT_THROW(Upload(L"1", L"pipe567890123456"), std::out_of_range);
    EXPECT_TRUE(std::filesystem::exists(m_folder / L"package"));
    EXPECT_GT(AskForPlace(L"other"), 0);
    cmdhl_RemoveClientFromLogUploadingList(L"uid");
    cmdhl_RemoveClientFromLogUploadingList(L"other");
}

TEST_F(FirewallUpload, AnEntryIsDeletedWhateverBecomesOfIt) {
    std::wstring uid = L"uid";
    std::filesystem::create_directory(m_folder / L"sub");
    wrb::test::WriteAll(m_folder / L"sub\\a.log", "x");
    const std::string directory = m_folder.string();
    const auto fail = [](const std::wstring&, const wchar_t*) -> int32_t { throw std::runtime_error("no"); };
    const auto throwNumber = [](const std::wstring&, const wchar_t*) -> int32_t { throw 1; };
    EXPECT_TRUE(cmdhl_ProcessExtractedLog("sub\\a.log", directory.c_str(), FPK_ENTRY_FOUND, &uid, fail));
    EXPECT_FALSE(IsFolderEmpty());
    EXPECT_TRUE(cmdhl_ProcessExtractedLog("sub\\a.log", directory.c_str(), FPK_ENTRY_WRITTEN, &uid, throwNumber));
    EXPECT_TRUE(IsFolderEmpty());
    TakeCapturedLog();
    EXPECT_TRUE(cmdhl_ProcessExtractedLog("a.log", directory.c_str(), FPK_ENTRY_WRITTEN, &uid, fail));
    EXPECT_EQ(TakeCapturedLog(),
              (std::vector<CapturedLine>{
                  {'E', L"cmdhl_ProcessExtractedLog - no"},
                  {8, L"cmdhl_SetNVLog: DeleteFile(" + (m_folder / L"a.log").wstring() + L") fail err=2"}}));
}

TEST_F(FirewallUpload, TheQueryConditionComesWithTheWaitingTime) {
    EXPECT_EQ(Ask(L"CMDHL_PFW_GET_LOG_QUERY_CONDITION", L"first"), L"1\t0\ttype=1;days=7");
    EXPECT_EQ(Ask(L"CMDHL_PFW_GET_LOG_QUERY_CONDITION", L"second"), L"1\t1\ttype=1;days=7");
    cmdhl_RemoveClientFromLogUploadingList(L"first");
    cmdhl_RemoveClientFromLogUploadingList(L"second");
}

TEST_F(FirewallUpload, CountsAreStoredAndAddedUpOnRequest) {
    const wrb::test::FakeDbService database;
    for (const std::wstring alert : {L"1", L"0", L"", L"-1"}) {
        Tell(L"CMDHL_PFW_UPDATE_CFW_COUNT\tuid\t-5\t1\t4294967295\t3\t4\t-1\t99999999999\t20240131235959\t" + alert);
    }
    // Totals are the process's: what the first of the two adds to nothing, the second adds to the first.
    std::vector<std::array<uint64_t, 4>> totals;
    for (const CapturedLine& line : TakeCapturedLog()) {
        auto& [logs, first, second, third] = totals.emplace_back();
        if (swscanf(line.text.c_str(),
                    L"InsertOneLog - at 20240131235959: 4294967295, 1, 3; in %I64u logs: %I64u, %I64u, %I64u", &logs,
                    &first, &second, &third) != 4) {
            totals.pop_back();
        }
    }
    ASSERT_EQ(totals.size(), 2u);
    const uint64_t added[] = {1, 4294967295, 1, 3};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(totals[1][i] - totals[0][i], added[i]) << i;
    }
    const auto requests = database.WaitFor(4);
    ASSERT_EQ(requests.size(), 4u);
    std::vector<std::wstring> fields = requests[0].Fields();
    ASSERT_EQ(fields.size(), 11u);
    fields.pop_back();  // calendar seconds: they depend on the time zone
    EXPECT_EQ(fields, (std::vector<std::wstring>{L"DB_SET_CFW_LOGCOUNT", L"-1", L"uid", L"-5", L"1", L"4294967295",
                                                 L"3", L"4", L"4294967295", L"4294967295"}));
}

}  // namespace
