// What wrbback does with clients that mean no good, and with a command line that is wrong.
#include <gtest/gtest.h>

#include <functional>

#include "BackEnd.h"
#include "DbAgent.h"
#include "DbApiHeader.h"
#include "DebugLog.h"
#include "FakePipeService.h"
#include "LogFilter.h"
#include "MsgSerializer.h"
#include "PipeClient.h"
#include "Store.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

constexpr wchar_t kDbPipe[] = L"DbServerNamePipe";
constexpr wchar_t kLogPipe[] = L"Log_ServerNamePipe";

void SendBytes(const wchar_t* pipe, const std::string& bytes) {
    CPipeClient client;
    ASSERT_TRUE(client.Initial(pipe)) << GetLastError();
    uint64_t count = bytes.size();
    client.Send(bytes.data(), count);  // may fail: a service that has seen enough closes
}

std::string WideOf(const std::wstring& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

std::string Frame() {
    CDbApiHeaderContent content;
    content.FillInContent(L"back_test");
    CMsgSerializer message;
    message << content;
    const uint32_t words[] = {kDbApiMagic, message.GetSize()};
    return std::string(reinterpret_cast<const char*>(words), sizeof words) +
           std::string(reinterpret_cast<const char*>(message.Data()), message.GetSize());
}

std::string Serialized(const wchar_t* name) {
    CMsgSerializer message(name);
    message << std::wstring(kFullAgent);
    return std::string(reinterpret_cast<const char*>(message.Data()), message.GetSize());
}

bool Serves() {
    std::wstring computer;
    return dbGetComputerNameW(kFullAgent, computer) && computer == L"RECEPTION-01";
}

TEST(BackHostile, BadFramesAreDroppedAndCountedAndTheServiceGoesOn) {
    CBackEnd backEnd;
    const std::string text = Frame() + WideOf(L"DB_GET_IP\t1\tx\t0") + std::string(2, '\0');
    const std::string message = Frame() + Serialized(L"DBV2_CLIENT_GET_ALL_SCAN_CFG");
    std::string inFile = message;
    inFile[Frame().size() + 16] = 2;
    const std::string bad[] = {
        "x",
        std::string(8, '\0'),
        std::string("\x03\x07\x1A\x0E\xFF\xFF\xFF\xFF", 8),
        std::string("\x03\x07\x1A\x0E\x00\x00\x00\x00", 8) + WideOf(L"DB_GET_IP"),
        Frame(),
        Frame() + "odd",
        Frame() + WideOf(L"DB_SET_NOTHING\t-1\tx"),
        Frame() + WideOf(L"DB_GET_IP\t-1\tx\t0"),
        inFile,
        Frame() + Serialized(L"DB_GET_IP"),
        std::string(5u << 20, 'x'),
    };
    for (const std::string& bytes : bad) {
        SendBytes(kDbPipe, bytes);
    }
    ASSERT_TRUE(Serves());
    const std::size_t step = 23;
    for (const std::string& whole : {text, message}) {
        for (std::size_t length = 1; length < whole.size(); length += step) {
            SendBytes(kDbPipe, whole.substr(0, length));
        }
        for (std::size_t at = 0; at < whole.size(); at += step) {
            std::string mutated = whole;
            mutated[at] = static_cast<char>(mutated[at] ^ 0xFF);
            SendBytes(kDbPipe, mutated);
        }
    }
    ASSERT_TRUE(Serves());
    const std::string output = backEnd.Stop();
    const std::size_t at = output.find(" writes, ");
    ASSERT_NE(at, std::string::npos) << output;
    EXPECT_GE(std::atoi(output.c_str() + at + 9), static_cast<int>(std::size(bad))) << output;
    EXPECT_NE(output.find("header frame: bad magic"), std::string::npos) << output;
    EXPECT_NE(output.find("no such write: DB_SET_NOTHING"), std::string::npos);
    EXPECT_NE(output.find("the message is too long"), std::string::npos);
}

TEST(BackHostile, AnUnknownCommandIsAnsweredWithoutAByte) {
    CBackEnd backEnd;
    const CFakePipeService requester(L"DbCln_4242");
    SendBytes(kDbPipe, Frame() + WideOf(L"DB_GET_NOTHING\t4242\tx"));
    const auto received = requester.WaitFor(1);
    ASSERT_EQ(received.size(), 1u);
    EXPECT_TRUE(received[0].bytes.empty());
}

TEST(BackHostile, RequestersThatDoNotReadAndClientsThatDoNotWriteKeepNobodyWaiting) {
    CBackEnd backEnd({L"--workers", L"2"});
    std::vector<CFileHandle> silent;
    for (int i = 0; i < 10; ++i) {
        silent.push_back(OpenPipeForWriting(kDbPipe));
        ASSERT_TRUE(silent.back());
    }
    // One worker waits for a requester whose pipe stays busy; the other answers.
    const CFileHandle busy(CreateNamedPipeW(L"\\\\.\\pipe\\DbCln_4243", PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 1, 1024,
                                            1024, 50, nullptr));
    const CFileHandle holder = OpenPipeForWriting(L"DbCln_4243");
    ASSERT_TRUE(busy && holder);
    SendBytes(kDbPipe, Frame() + WideOf(std::wstring(L"DB_GET_IP\t4243\t") + kFullAgent + L"\t0"));
    EXPECT_TRUE(Serves());
}

TEST(BackHostile, LogLinesArriveInOrderAndCannotBeForged) {
    CBackEnd backEnd;
    DebugLogSetup(L"", L"", "BACKTEST", true);
    for (int i = 0; i < 50; ++i) {
        WRB_LOG(kLogDebug, L"line %d", i);
    }
    WRB_LOG(kLogError, L"two\r\n2024 01/01 00:00:00 [0001 : 0001] [E] forged");
    ASSERT_TRUE(backEnd.WaitForLog("forged"));
    const std::string log = backEnd.Log();
    std::size_t at = 0;
    for (int i = 0; i < 50; ++i) {
        at = log.find("[D] [BACKTEST][back_test.exe]line " + std::to_string(i) + " - [tests\\integration\\", at);
        ASSERT_NE(at, std::string::npos) << i;
    }
    EXPECT_NE(log.find("[E] [BACKTEST][back_test.exe]two\\r\\n2024 01/01"), std::string::npos);
    DebugLogSetup(L"", L"", "BACKTEST", false);
}

TEST(BackHostile, TheLogLevelIsSetAtTheStartAndAtRunTime) {
    CBackEnd backEnd({L"--log-level", L"W"});
    EXPECT_TRUE(CLogFilter::Shared().Admits(kLogWarning));
    EXPECT_FALSE(CLogFilter::Shared().Admits(kLogInfo));
    for (const wchar_t* message :
         {L"LOG_SET_LEVEL\tloud", L"LOG_SET_LEVEL", L"LOG_ERASE", L"LOG_WRITE\t1\t2", L"\t\t"}) {
        SendBytes(kLogPipe, WideOf(message));
    }
    SendBytes(kLogPipe, std::string(70'000, 'x'));
    EXPECT_FALSE(CLogFilter::Shared().Admits(kLogInfo));
    SendBytes(kLogPipe, WideOf(std::wstring(L"LOG_SET_LEVEL\tI") + L'\0'));
    ASSERT_TRUE(backEnd.WaitForLog("the log level is now I"));
    EXPECT_TRUE(CLogFilter::Shared().Admits(kLogInfo));
    EXPECT_FALSE(CLogFilter::Shared().Admits(kLogDebug));
    EXPECT_NE(backEnd.Stop().find("6 refused, 0 lost"), std::string::npos);
}

TEST(BackHostile, ExitCodes) {
    const CTempFolder folder;
    const std::wstring db = (folder / L"agents.db").wstring();
    const std::wstring json = (folder / L"agents.json").wstring();
    WriteAll(json, R"({"agents": [{"uid": "x"}]})");
    const struct {
        std::vector<std::wstring> arguments;
        DWORD code;
        const char* output;
    } kRuns[] = {
        {{}, 2, "subcommand is required"},
        {{L"--help"}, 0, "Examples:"},
        {{L"serve"}, 2, "--db is required"},
        {{L"serve", L"--db", db, L"--workers", L"0"}, 2, "--workers"},
        {{L"serve", L"--db", db, L"--log-level", L"loud"}, 2, "no log level loud"},
        {{L"serve", L"--db", db, L"--debug-ini", json + L"x"}, 2, "no such file"},
        {{L"serve", L"--db", db}, 1, "cannot be opened"},
        {{L"seed", json + L"x", L"--db", db}, 2, "cannot be opened"},
        {{L"seed", L"/no/file", L"--db", db}, 2, "/no/file: cannot be opened"},  // no option, though it has a slash
        {{L"seed", json, L"--db", db}, 2, "agents[0].uid: must be a GUID"},
        {{L"stop"}, 3, "not running"},
    };
    for (const auto& run : kRuns) {
        const tagRun result = RunBackEnd(run.arguments);
        EXPECT_EQ(result.code, run.code) << result.output;
        EXPECT_NE(result.output.find(run.output), std::string::npos) << result.output;
    }
    EXPECT_FALSE(std::filesystem::exists(db));  // a bad seed file makes no database
    CBackEnd backEnd;
    const tagRun second = RunBackEnd({L"serve", L"--db", backEnd.Database()});
    EXPECT_EQ(second.code, 1u);
    EXPECT_NE(second.output.find("already running"), std::string::npos);
}

}  // namespace
}  // namespace wrb::test
