// The four entry points, over real pipes, the real counter block and a home folder without settings; and the policies
// that they read at the start.
#include <gmock/gmock.h>

#include <random>

#include "AllocationCount.h"
#include "Ask.h"
#include "BmPolicyCache.h"
#include "CapturedLog.h"
#include "CounterSection.h"
#include "DebugLog.h"
#include "FakePipeService.h"
#include "INICache.h"
#include "ManualClock.h"
#include "OSException.h"
#include "OnThreads.h"
#include "ServerHome.h"
#include "UniqueName.h"
#include "cmdhl_Reply.h"

// In place of the system's: a test sets how long a command sleeps.
static ManualClock& TheClock() {
    static ManualClock clock(1'000'000, 1'700'000'000);
    return clock;
}

const wrb::IClock& wrb::SystemClock() {
    return TheClock();
}

namespace {

class EntryPoints : public testing::Test {
  protected:
    void SetUp() override { EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr)); }
    void TearDown() override { EXPECT_FALSE(cmdhl_Finalize()); }
};

// The default of a missing key is cached, so an entry that was kept gives the first default once more.
TEST_F(EntryPoints, ClearIniCacheSparesTheSandboxAnalyzer) {
    for (CINICache* cache : {&ScanIniCache(), &ServerIniCache(), &SbaIniCache()}) {
        cache->readINIInt(L"Section", L"Key", 1);
    }
    Tell(L"CMDHL_CLEAR_INI_CACHE");
    EXPECT_EQ(ScanIniCache().readINIInt(L"Section", L"Key", 2), 2u);
    EXPECT_EQ(ServerIniCache().readINIInt(L"Section", L"Key", 2), 2u);
    EXPECT_EQ(SbaIniCache().readINIInt(L"Section", L"Key", 2), 1u);
    EXPECT_EQ(TakeCapturedTexts().back(), L"cmdhl_ClearIniCache");
}

// The clock that the test sets and the thread decide how long it sleeps: here about two seconds.
TEST_F(EntryPoints, SleepLogsItsContentAndSleepsAsItsSeedSays) {
    const auto milliseconds = [] {
        std::minstd_rand random(TheClock().TickMilliseconds() + GetCurrentThreadId());
        return random() % 3000;
    };
    while (milliseconds() < 2000) {
        TheClock().AdvanceTick(1);
    }
    TakeCapturedTexts();
    const ULONGLONG start = GetTickCount64();
    Tell(L"CMDHL_SLEEP\tsome content\tspare");
    EXPECT_GE(GetTickCount64() - start, milliseconds() - 50);
    EXPECT_THAT(TakeCapturedTexts(), testing::ElementsAre(L"content:[some content]"));
}

// Two threads sleep as often as they may, until one finds the other asleep.
TEST_F(EntryPoints, OneCommandSleepsAtATime) {
    std::atomic<bool> isRefused{false};
    TakeCapturedLog();
    wrb::test::OnThreads(2, [&](unsigned) {
        while (!isRefused) {
            Tell(L"CMDHL_SLEEP\tcontent");
            for (const CapturedLine& line : TakeCapturedLog()) {
                isRefused =
                    isRefused || line == CapturedLine{kLogWarning, L"cmdhl_Sleep - refused, another command sleeps."};
            }
        }
    });
}

// A body that does not fit into the pipe, so that the write is still under way when the reader goes.
TEST_F(EntryPoints, AReplyThatFailsSaysAtWhichStep) {
    TakeCapturedTexts();
    Tell(L"CMDHL_ECHO\tnobody\tx");
    const CapturedLine echoFailed{kLogError, L"cmdhl_Echo - cmdhl_OutputCommand failed."};
    EXPECT_THAT(
        TakeCapturedLog(),
        testing::ElementsAre(CapturedLine{kLogDebug8, L"content:[x]"},
                             CapturedLine{kLogNotice5, L"init pipe client [nobody] failed! err=[2]"}, echoFailed));
    const std::wstring name = wrb::test::UniqueName(L"reply");
    wrb::FileHandle reader(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_INBOUND,
                                            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 4096, 0, nullptr));
    ASSERT_TRUE(reader) << GetLastError();
    std::thread leaving([&reader] {
        ConnectNamedPipe(reader.Get(), nullptr);
        reader.Reset();
    });
    Tell(L"CMDHL_ECHO\t" + name + L"\t" + std::wstring(1 << 20, L'x'));
    leaving.join();
    const std::vector<CapturedLine> lines = TakeCapturedLog();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].level, kLogNotice5);
    EXPECT_THAT(lines[1].text, testing::StartsWith(L"pipe [" + name + L"] send failed!. err=["));
    EXPECT_EQ(lines[2], echoFailed);
}

// All pipes exist: what is refused is the name. The peer's own name, spelled in ways that the system also takes, is
// not.
TEST_F(EntryPoints, NoReplyGoesToTheHostOrToAService) {
    const std::wstring services[] = {L"Calloway Systems WRBY Command Handler Manager",
                                     L"DbServerNamePipe",
                                     L"Global\\LogPoolCommandManager",
                                     L"QMAgentServerNamePipe",
                                     L"Log_ServerNamePipe",
                                     L"WrbServerNamePipe"};
    const auto spellings = [](std::wstring name) {
        std::wstring upper = name;
        CharUpperW(upper.data());
        std::wstring slashes = L"/" + name;
        std::ranges::replace(slashes, L'\\', L'/');
        return std::vector<std::wstring>{name,           upper,        L"\\\\" + name,         slashes,
                                         name + L". .",  name + L"\\", L".\\" + name + L".\\", L"a\\..\\" + name,
                                         name + L"/a/.."};
    };
    for (const std::wstring& service : services) {
        const wrb::test::FakePipeService pipe(service);
        for (const std::wstring& name : spellings(service)) {
            TakeCapturedTexts();
            Tell(L"CMDHL_ECHO\t" + name + L"\tx");
            EXPECT_THAT(TakeCapturedTexts(), testing::Contains(L"init pipe client [" + name + L"] failed! err=[5]"));
        }
        wrb::test::OpenPipeForWriting(service);
        EXPECT_EQ(pipe.WaitFor(1).size(), 1u) << "only the test's own connection";
    }
    const std::wstring peer = wrb::test::UniqueName(L"reply");
    const wrb::test::FakePipeService pipe(peer);
    for (const std::wstring& name : {peer, L"/" + peer}) {
        EXPECT_EQ(cmdhl_OutputCommand(name.c_str(), L"x", 2), 1u);
    }
}

// The server INI names the shortest time; the second connection would otherwise wait for ever.
TEST_F(EntryPoints, AReplyPipeThatIsBusyOrUnreadIsGivenUp) {
    const wrb::test::ServerHome home;
    home.Write(L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\r\nReplyTimeoutSeconds=1\r\n");
    cmdhl_Finalize();
    cmdhl_Initialize(L"", L"", nullptr);
    ServerIniCache().clear();
    const std::wstring name = wrb::test::UniqueName(L"reply");
    const wrb::FileHandle unread(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_INBOUND,
                                                  PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 1024,
                                                  NMPWAIT_WAIT_FOREVER, nullptr));
    TakeCapturedTexts();
    Tell(L"CMDHL_ECHO\t" + name + L"\t" + std::wstring(5000, L'x'));
    EXPECT_THAT(TakeCapturedTexts(), testing::Contains(L"pipe [" + name + L"] send failed!. err=[121]"));
    DisconnectNamedPipe(unread.Get());
    std::thread listening([&] { ConnectNamedPipe(unread.Get(), nullptr); });
    const wrb::FileHandle holder = wrb::test::OpenPipeForWriting(name);
    listening.join();
    Tell(L"CMDHL_ECHO\t" + name + L"\tx");
    EXPECT_THAT(TakeCapturedTexts(), testing::Contains(L"init pipe client [" + name + L"] failed! err=[121]"));
    ServerIniCache().clear();
}

TEST_F(EntryPoints, WithoutMemoryThePoliciesAreLeftOut) {
    const wrb::test::ServerHome home;
    home.Write(L"Private\\wrbserver.ini", "[VEXOR_BMPolicy]\r\nCount=1000\r\n");
    cmdhl_Finalize();
    FailAllocationsOfThisThread(1000 * sizeof(tagVEXORPolicyItem));
    EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr));
    FailAllocationsOfThisThread(0);
    EXPECT_EQ(g_pBmPolicyCache, nullptr);
    EXPECT_EQ(TakeCapturedTexts().back(), L"cmdhl_Initialize - Failed to new g_pBmPolicyCache");
}

TEST_F(EntryPoints, WhatIsNotACommandLeavesNoTrace) {
    TakeCapturedTexts();
    for (const wchar_t* text : {L"CMDHL_NO_SUCH_COMMAND\tpipe\tuid", L""}) {
        EXPECT_EQ(cmdhl_Process(text, 0xFFFFFFFF), 0u);
    }
    EXPECT_TRUE(TakeCapturedTexts().empty());
}

TEST_F(EntryPoints, StartAndStopMayBeRepeated) {
    wrb::BmPolicyCache* const first = g_pBmPolicyCache;
    ASSERT_NE(first, nullptr);
    EXPECT_FALSE(cmdhl_Initialize(L"", L"", nullptr));
    EXPECT_EQ(g_pBmPolicyCache, first) << "a running command may be reading it";
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"once"), L"once");
    EXPECT_FALSE(cmdhl_Finalize());
    EXPECT_EQ(g_pBmPolicyCache, nullptr);
}

TEST_F(EntryPoints, AfterTheEndUncountedCommandsRunAndCountedOnesThrow) {
    cmdhl_Finalize();
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");
    EXPECT_THAT(
        [] { Tell(L"CMDHL_GET_MS_CFG\tpipe\tuid"); },
        testing::Throws<OS::CException>(testing::Property(&OS::CException::GetCode, static_cast<uint32_t>(E_FAIL))));
    cmdhl_Initialize(L"", L"", nullptr);
    wrb::CounterReader reader;
    uint32_t error = 0;
    ASSERT_EQ(reader.Attach(error), wrb::CounterAttach::Attached) << error;
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST(BmPolicyCache, ReadsAsManyPoliciesAsTheCountSays) {
    const wrb::test::TempFolder folder;
    using Policy = std::tuple<std::wstring, uint32_t, bool>;  // id, action, enable
    const std::pair<const char*, std::vector<Policy>> rows[] = {
        {"Count=3\r\nPolicyId0=7\r\nAction0=2\r\nEnable0=1\r\nPolicyId1=-5\r\nEnable1=0\r\n"
         "PolicyId2=VP-0001\r\nAction2=9\r\nPolicyId3=99\r\n",
         {{L"7", 2, true}, {L"-5", 0, false}, {L"VP-0001", 9, false}}},
        {"", {}},
        {"Count=-1\r\n", {}},
        {"Count=many\r\n", {}},
        {"Count=2147483647\r\n", std::vector<Policy>(wrb::BmPolicyCache::kMaxPolicies)},
    };
    for (const auto& [keys, expected] : rows) {
        wrb::test::WriteAll(folder / L"server.ini", std::string("[VEXOR_BMPolicy]\r\n") + keys);
        ServerIniCache().clear();
        ServerIniCache().init((folder / L"server.ini").c_str(), 1);
        std::vector<Policy> policies;
        for (const tagVEXORPolicyItem& policy : wrb::BmPolicyCache().Policies()) {
            policies.emplace_back(policy.policyId, policy.action, policy.enable);
        }
        EXPECT_EQ(policies, expected) << keys;
    }
}

}  // namespace
