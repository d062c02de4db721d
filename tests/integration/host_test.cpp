// wrbhost as a program: the real command library, and one that misbehaves.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "CmdProtocol.h"
#include "ExpectRun.h"
#include "FakePipeService.h"
#include "PipeClient.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

constexpr wchar_t kProgram[] = L"wrbhost.exe";
constexpr wchar_t kPipe[] = L"Calloway Systems WRBY Command Handler Manager";
const std::wstring kLibrary = ProgramFolder() + L"host_test_library.dll";

bool SendText(std::wstring_view text, uint64_t moreBytes = 0) {
    CPipeClient client;
    uint64_t bytes = text.size() * sizeof(wchar_t) + moreBytes;
    return client.Initial(kPipe) && client.Send(text.data(), bytes);
}

std::wstring Ask(const wchar_t* command, const wchar_t* parameter) {
    const std::wstring name = UniqueName(L"reply");
    const FakePipeService reply(name);
    CCmdProtocol message;
    message << command << name << parameter;
    EXPECT_TRUE(SendText(message.Text()));
    const auto messages = reply.WaitFor(1);
    return messages.empty() ? L"no answer" : messages[0].Text();
}

// wrbhost, serving.
struct Host : ChildProcess {
    explicit Host(const std::vector<std::wstring>& arguments) : ChildProcess(kProgram, arguments) {
        EXPECT_TRUE(WaitForOutput("wrbhost: serving")) << Output();
    }
    // Stops it, and expects that exit code and each of the parts in the output.
    void ExpectEnd(DWORD code, std::initializer_list<const char*> parts) const {
        ExpectRun(kProgram, {L"--stop"}, 0);
        EXPECT_EQ(WaitForExit(), code);
        for (const char* part : parts) {
            EXPECT_NE(Output().find(part), std::string::npos) << part << Output();
        }
    }
};

TEST(Host, ServesTheLibraryUntilItIsStopped) {
    const Host host({L"--workers", L"3"});
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", L"an-agent"), L"") << "no database server runs";
    EXPECT_TRUE(Ask(L"CMDHL_GET_MS_CFG", L"").starts_with(L"[Manual Scan Configuration]\n"));
    EXPECT_TRUE(SendText(L"CMDHL_NO_SUCH_COMMAND"));
    ExpectRun(kProgram, {}, 1, "already running");
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");
    host.ExpectEnd(0, {"wrbhost: serving with 3 workers", "handled 4, refused 1, threw 0, dropped 0"});
    ExpectRun(kProgram, {L"--stop"}, 3, "not running");
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

TEST(Host, StopTimesOut) {
    const Host host({L"--dll", kLibrary});
    EXPECT_TRUE(SendText(L"CMDHL_STUCK"));
    ExpectRun(kProgram, {L"--stop", L"--timeout", L"1"}, 4);
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
        {{L"--no-such-option"}, 2, "no-such-option"},
        {{L"--help"}, 0, "Examples:"},
    };
    for (const auto& [arguments, code, output] : kCases) {
        ExpectRun(kProgram, arguments, code, output);
    }
    const FakePipeService other(kPipe);
    ExpectRun(kProgram, {}, 1, "another program serves the command pipe");
}

}  // namespace
}  // namespace wrb::test
