// wrbhost as a program: the real command library, and one that misbehaves.

#include "HostProcess.h"
#include "ServerHome.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

TEST(Host, ServesTheLibraryUntilItIsStopped) {
    const Host host({L"--workers", L"3"});
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", L"an-agent"), L"") << "no database server runs";
    EXPECT_TRUE(Ask(L"CMDHL_GET_MS_CFG", L"").starts_with(L"[Manual Scan Configuration]\n"));
    EXPECT_TRUE(Ask(L"CMDHL_GET_PRODUCT_INFO", L"").starts_with(L"Warrenby\t")) << "of the library's resource";
    EXPECT_TRUE(SendText(L"CMDHL_NO_SUCH_COMMAND"));
    ExpectRun(kHost, {}, 1, "already running");
    const struct {
        std::vector<std::wstring> arguments;
        const char* output;
    } kCounters[] = {
        {{}, "\nCMDHL_GET_MS_CFG                              2       0"},
        {{L"--interval", L"0.1", L"--times", L"2"}, "p99 ms\ncalls in progress: 0\n"},  // nothing new
        {{L"--json"}, "\"calls\":2,\"failures\":0,"},
        {{L"--json", L"--interval", L"0.1", L"--times", L"2"}, "\"interval\":{\"calls\":0,"},
        {{L"--format", L"prometheus"}, "\nwarrenby_command_seconds_count{command=\"CMDHL_GET_MS_CFG\"} 2\n"},
    };
    for (const auto& [arguments, output] : kCounters) {
        std::vector<std::wstring> all = {L"counters"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        ExpectRun(L"wrbctl.exe", all, 0, output);
    }
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");
    host.ExpectEnd(0, {"wrbhost: serving with 3 workers", "handled 5, refused 1, threw 0, dropped 0"});
    ExpectRun(kHost, {L"--stop"}, 3, "not running");
}

TEST(Host, ATraceShowsTheCommandsThatPassItsFilters) {
    ExpectRun(L"wrbctl.exe", {L"trace"}, 3, "the host does not run");
    const Host host({});
    const ChildProcess trace(L"wrbctl.exe", {L"trace", L"--command", L"ms_cfg", L"--uid", L"AGENT", L"--count", L"2"});
    ASSERT_TRUE(trace.WaitForOutput("result\n"));
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"an-agent"), L"an-agent");
    EXPECT_NE(Ask(L"CMDHL_GET_MS_CFG", L""), L"");
    for (const wchar_t* const uid : {L"an-agent", L"agent\x1B[31m"}) {
        EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", uid), L"");
    }
    EXPECT_EQ(trace.WaitForExit(), 0u);
    for (const char* const part :
         {"CMDHL_GET_MS_CFG                       an-agent  ", "0    0  ok\n", "agent\\u001B[31m"}) {
        EXPECT_NE(trace.Output().find(part), std::string::npos) << part << trace.Output();
    }
    EXPECT_EQ(trace.Output().find("ECHO"), std::string::npos);
}

// What was sent before the stop is answered, though the one worker is busy when the stop comes.
TEST(Host, DrainsWhatItHasAccepted) {
    const Host host({L"--workers", L"2"});
    const std::wstring name = UniqueName(L"reply");
    const FakePipeService reply(name);
    EXPECT_TRUE(SendText(L"CMDHL_SLEEP\tx"));
    EXPECT_TRUE(SendText(L"CMDHL_ECHO\t" + name + L"\tdrained"));
    host.ExpectEnd(0, {"handled 2, "});
    const auto messages = reply.WaitFor(1);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].Text(), L"drained");
}

TEST(Host, SurvivesWhatTheLibraryThrows) {
    const Host host({L"--dll", kLibrary, L"--workers", L"1"});
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(SendText(L"CMDHL_STD\tfield") && SendText(L"CMDHL_INT"));
    }
    for (const wchar_t* text : {L"CMDHL_\x1B[31mLOUD", L"CMDHL_FINE", L"CMDHL_UNKNOWN"}) {
        EXPECT_TRUE(SendText(text));
    }
    EXPECT_TRUE(SendText(L"CMDHL_ODD", 1));
    host.ExpectEnd(0, {"[CMDHL_STD] threw: a standard exception", "[CMDHL_INT] threw: not a std::exception",
                       "[CMDHL_?[31mLOUD] threw: not a std::exception", "handled 2, refused 1, threw 41, dropped 0"});
}

TEST(Host, GivesUpOnACommandThatIsStuck) {
    const Host host({L"--dll", kLibrary, L"--timeout", L"1"});
    EXPECT_TRUE(SendText(L"CMDHL_STUCK"));
    host.ExpectEnd(4, {"a command is still running; giving up"});
}

TEST(Host, AStopMaySayHowLongItTakes) {
    const Host host({L"--dll", kLibrary});
    EXPECT_TRUE(SendText(L"CMDHL_STUCK"));
    ExpectRun(kHost, {L"--stop", L"--timeout", L"1"}, 4, "the host has ended with commands running");
    EXPECT_EQ(host.WaitForExit(), 4u);
}

TEST(Host, SaysWhyItDoesNotStart) {
    const struct {
        std::vector<std::wstring> arguments;
        DWORD code;
        const char* output;
    } kCases[] = {
        {{L"--dll", L"no_such.dll"}, 1, "cannot load "},
        {{L"--dll", ProgramFolder() + L"host_test_lacking.dll"}, 1, "it lacks one of the four exports"},
        {{L"--dll", kLibrary, L"--debug-ini", L"throw"}, 1, "does not start: cannot start"},
        {{L"--workers", L"0"}, 2, "workers"},
        {{L"--workers", L"255"}, 2, "workers"},
        {{L"--allow", L"nobody of that name"}, 2, "no such account: nobody of that name"},
        {{L"--status"}, 3, "not running"},
        {{L"--no-such-option"}, 2, "no-such-option"},
        {{L"--help"}, 0, "Examples:"},
    };
    for (const auto& [arguments, code, output] : kCases) {
        ExpectRun(kHost, arguments, code, output);
    }
    const ServerHome home;
    home.Write(L"Private\\wrbserver.ini", "[INI_SERVER_SECTION]\nCommandPipeAccounts=" + std::string(8191, ';') + "\n");
    ExpectRun(kHost, {}, 2, "CommandPipeAccounts of Private\\wrbserver.ini has more than 8190 characters");
    home.Write(L"Private\\wrbserver.ini", "");
    const FakePipeService other(kHostPipe);
    ExpectRun(kHost, {}, 1, "another program serves the command pipe");
}

}  // namespace
}  // namespace wrb::test
