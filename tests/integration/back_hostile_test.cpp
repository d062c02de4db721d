// What wrbback does with clients that mean no good, and with a command line that is wrong.

#include <algorithm>

#include "BackEnd.h"
#include "DbAgent.h"
#include "DbFrame.h"
#include "DebugLog.h"
#include "FakeDbService.h"
#include "FakePipeService.h"
#include "LogFilter.h"
#include "MsgSerializer.h"
#include "Store.h"

namespace wrb::test {
namespace {

constexpr wchar_t kDbPipe[] = L"DbServerNamePipe";
constexpr wchar_t kLogPipe[] = L"Log_ServerNamePipe";

std::string Serialized(const wchar_t* name) {
    CMsgSerializer message(name);
    message << std::wstring(kFullAgent);
    return BytesOf(message);
}

bool Serves() {
    std::wstring computer;
    return dbGetComputerNameW(kFullAgent, computer, 0) && computer == L"RECEPTION-01";
}

TEST(BackHostile, BadFramesAreDroppedAndCountedAndTheServiceGoesOn) {
    BackEnd backEnd;
    const std::string text = Framed(WideBytes(L"DB_GET_IP\t1\tx\t0") + std::string(2, '\0'));
    const std::string message = Framed(Serialized(L"DBV2_CLIENT_GET_ALL_SCAN_CFG"));
    std::string inFile = message;
    inFile[Framed("").size() + 16] = 2;
    const std::string bad[] = {
        std::string("\x03\x07\x1A\x0E\x00\x00\x00\x00", 8) + WideBytes(L"DB_GET_IP"),
        Framed(""),
        Framed("odd"),
        Framed(WideBytes(L"DB_SET_NOTHING\t-1\tx")),
        Framed(WideBytes(L"DB_GET_IP\t-1\tx\t0")),
        inFile,
        Framed(Serialized(L"DB_GET_IP")),
        std::string(5u << 20, 'x'),
    };
    for (const std::string& bytes : bad) {
        SendBytes(kDbPipe, bytes);
    }
    for (std::string whole : {text, message}) {
        for (std::size_t at = 0; at < whole.size(); at += 23) {
            SendBytes(kDbPipe, whole.substr(0, at + 1));
            whole[at] = static_cast<char>(~whole[at]);
            SendBytes(kDbPipe, whole);
            whole[at] = static_cast<char>(~whole[at]);
        }
    }
    ASSERT_TRUE(Serves());
    const std::string output = backEnd.Stop();
    for (const char* note : {"header frame: bad magic", "no such write: DB_SET_NOTHING", "the message is too long"}) {
        EXPECT_NE(output.find(note), std::string::npos) << output;
    }
    const std::size_t at = output.find(" writes, ");
    ASSERT_NE(at, std::string::npos) << output;
    EXPECT_GE(std::atoi(output.c_str() + at + 9), static_cast<int>(std::size(bad))) << output;
}

TEST(BackHostile, RequestersThatDoNotReadAndClientsThatDoNotWriteKeepNobodyWaiting) {
    BackEnd backEnd({L"--workers", L"2"});
    std::vector<FileHandle> silent(10);
    std::ranges::generate(silent, [] { return OpenPipeForWriting(kDbPipe); });
    // One worker waits for a requester whose pipe stays busy; the other answers.
    const FakePipeService busy(L"DbCln_4243");
    const FileHandle holder = OpenPipeForWriting(L"DbCln_4243");
    ASSERT_TRUE(silent.back() && holder);
    SendBytes(kDbPipe, Framed(WideBytes(std::wstring(L"DB_GET_IP\t4243\t") + kFullAgent + L"\t0")));
    EXPECT_TRUE(Serves());
    const FakePipeService requester(L"DbCln_4242");
    SendBytes(kDbPipe, Framed(WideBytes(L"DB_GET_NOTHING\t4242\tx")));
    const auto received = requester.WaitFor(1);
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].bytes, "") << "an unknown command";
}

TEST(BackHostile, WritesThatAStopDropsAreCountedAndTold) {
    BackEnd backEnd;
    const auto lock = OpenStore(backEnd.Database());
    lock->Execute("BEGIN IMMEDIATE");  // as another program may, for longer than the back end waits
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(dbSetConfFlagW(kFullAgent, 1, 0));
    }
    EXPECT_TRUE(Serves());
    const std::string output = backEnd.Stop();
    for (const char* text :
         {"DB_SET_CONF_FLAG failed: ", "agents.db: database is locked",
          "writes are dropped, the database holds one: ", "1 reads, 0 writes, 0 refused, 20 failed"}) {
        EXPECT_NE(output.find(text), std::string::npos) << output;
    }
}

TEST(BackHostile, LogLinesArriveInOrderAndTheLevelIsSetAtTheStartAndAtRunTime) {
    BackEnd backEnd({L"--log-level", L"W"});
    DebugLogSetup(L"", L"", "BACKTEST", true);
    for (const wchar_t* message : {L"LOG_SET_LEVEL\tloud", L"LOG_SET_LEVEL", L"LOG_ERASE", L"LOG_WRITE\t1\t2"}) {
        SendBytes(kLogPipe, WideBytes(message));
    }
    SendBytes(kLogPipe, std::string(70'000, 'x'));
    EXPECT_TRUE(LogFilter::Shared().Admits(kLogWarning));
    EXPECT_FALSE(LogFilter::Shared().Admits(kLogInfo));
    SendBytes(kLogPipe, WideBytes(std::wstring(L"LOG_SET_LEVEL\tI") + L'\0'));
    ASSERT_TRUE(backEnd.WaitForLog("the log level is now I"));
    EXPECT_FALSE(LogFilter::Shared().Admits(kLogDebug));
    for (int i = 0; i < 50; ++i) {
        WRB_LOG(kLogInfo, L"line %d", i);
    }
    WRB_LOG(kLogError, L"two\r\n2024 01/01 00:00:00 [0001 : 0001] [E] forged");
    DebugLogSetup(L"", L"", "BACKTEST", false);
    ASSERT_TRUE(backEnd.WaitForLog("[E] [BACKTEST][back_test.exe]two\\r\\n2024 01/01"));
    const std::string log = backEnd.Log();
    std::size_t at = 0;
    for (int i = 0; i < 50; ++i) {
        at = log.find("[I] [BACKTEST][back_test.exe]line " + std::to_string(i) + " - [tests\\integration\\", at);
        ASSERT_NE(at, std::string::npos) << i;
    }
    EXPECT_NE(backEnd.Stop().find("5 refused, 0 lost"), std::string::npos);
}

TEST(BackHostile, ExitCodes) {
    const TempFolder folder;
    const std::wstring db = (folder / L"agents.db").wstring();
    const std::wstring json = (folder / L"agents.json").wstring();
    WriteAll(json, R"({"agents": [{"uid": "x"}]})");
    const struct {
        std::vector<std::wstring> arguments;
        DWORD code;
        const char* output;
    } kRuns[] = {
        {{}, 2, "wrbback: A subcommand is required"},
        {{L"bogus"}, 2, "bogus"},
        {{L"serve", L"--db", db, L"--split-size", L"-1"}, 2, "--split-size"},
        {{L"serve", L"--db", db, L"--log-folder", json}, 1, "no log can be written to the folder"},
        {{L"serve", L"--db", db, L"--workers", L"0"}, 2, "--workers"},
        {{L"serve", L"--db", db, L"--log-level", L"loud"}, 2, "no log level loud"},
        {{L"serve", L"--db", db, L"--debug-ini", json + L"x"}, 2, "no such file"},
        {{L"serve", L"--db", db}, 1, "no such file"},
        {{L"serve", L"--db", L"odbc:Dsn=d;LoginTimeout=x"}, 2, "LoginTimeout takes a number from 1 to 3600"},
        {{L"check", L"--db", L"sqlite:"}, 2, "is no name of a file"},
        {{L"seed", L"/no/file", L"--db", db}, 2, "/no/file: cannot be opened"},  // no option, though it has a slash
        {{L"seed", json, L"--db", db}, 2, "agents[0].uid: must be a GUID"},
        {{L"stop"}, 3, "not running"},
    };
    for (const auto& [arguments, code, output] : kRuns) {
        ExpectRun(kBackEnd, arguments, code, output);
    }
    EXPECT_FALSE(std::filesystem::exists(db));  // a bad seed file makes no database
    BackEnd backEnd;
    ExpectRun(kBackEnd, {L"serve", L"--db", backEnd.Database()}, 1, "already running");
    const std::vector<std::wstring> check{L"check", L"--db", backEnd.Database()};
    ExpectRun(kBackEnd, check, 0, "version 4, ");
    // Rows of setting bundles stay.
    SqlDb(backEnd.Database())
        .Execute(
            "DELETE FROM agent; DELETE FROM scan; DELETE FROM spyware_approved; DELETE FROM restore_session;"
            "DELETE FROM behaviour_policy");
    ExpectRun(kBackEnd, check, 1, " belong to no agent");
}

}  // namespace
}  // namespace wrb::test
