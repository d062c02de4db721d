// wrbhost as a program: the real command library, and one that misbehaves.
#include <gtest/gtest.h>
#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "CmdProtocol.h"
#include "FakePipeService.h"
#include "PipeClient.h"
#include "UniqueName.h"

namespace {

using wrb::test::CChildProcess;
using wrb::test::CFakePipeService;
using wrb::test::UniqueName;

constexpr wchar_t kProgram[] = L"wrbhost.exe";
constexpr wchar_t kPipe[] = L"Calloway Systems WRBY Command Handler Manager";
constexpr char kServing[] = "wrbhost: serving";

std::wstring LibraryPath(const wchar_t* name) {
    return wrb::test::ProgramFolder() + name;
}

bool SendBytes(const void* data, uint64_t bytes) {
    CPipeClient client;
    return client.Initial(kPipe) && client.Send(data, bytes);
}

bool SendText(std::wstring_view text) {
    return SendBytes(text.data(), text.size() * sizeof(wchar_t));
}

std::wstring Ask(const wchar_t* command, const wchar_t* parameter) {
    const std::wstring name = UniqueName(L"reply");
    const CFakePipeService reply(name);
    CCmdProtocol message;
    message << command << name << parameter;
    EXPECT_TRUE(SendText(message.Text()));
    const auto messages = reply.WaitFor(1);
    return messages.empty() ? L"no answer" : messages[0].Text();
}

std::optional<DWORD> RunHost(const std::vector<std::wstring>& arguments, std::string* output = nullptr) {
    const CChildProcess program(kProgram, arguments);
    const std::optional<DWORD> code = program.WaitForExit();
    if (output != nullptr) {
        *output = program.Output();
    }
    return code;
}

TEST(Host, ServesTheLibraryUntilItIsStopped) {
    const CChildProcess host(kProgram, {L"--workers", L"3"});
    ASSERT_TRUE(host.WaitForOutput("wrbhost: serving with 3 workers")) << host.Output();
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"hello"), L"hello");
    EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", L"an-agent"), L"") << "no database server runs";
    EXPECT_TRUE(Ask(L"CMDHL_GET_MS_CFG", L"").starts_with(L"[Manual Scan Configuration]\n"));
    EXPECT_TRUE(SendText(L"CMDHL_NO_SUCH_COMMAND"));

    std::string output;
    EXPECT_EQ(RunHost({}, &output), 1u);
    EXPECT_NE(output.find("already running"), output.npos) << output;
    EXPECT_EQ(Ask(L"CMDHL_ECHO", L"still here"), L"still here");

    EXPECT_EQ(RunHost({L"--stop"}), 0u);
    EXPECT_EQ(host.WaitForExit(), 0u);
    EXPECT_NE(host.Output().find("handled 4, refused 1, threw 0, dropped 0"), std::string::npos) << host.Output();
    EXPECT_EQ(RunHost({L"--stop"}, &output), 3u);
    EXPECT_NE(output.find("not running"), output.npos) << output;
}

// What was sent before the stop is answered, though the one worker is busy when the stop comes.
TEST(Host, DrainsWhatItHasAccepted) {
    const CChildProcess host(kProgram, {L"--workers", L"2"});
    ASSERT_TRUE(host.WaitForOutput(kServing)) << host.Output();
    const std::wstring name = UniqueName(L"reply");
    const CFakePipeService reply(name);
    EXPECT_TRUE(SendText(L"CMDHL_SLEEP\tx"));
    EXPECT_TRUE(SendText(L"CMDHL_ECHO\t" + name + L"\tdrained"));
    EXPECT_EQ(RunHost({L"--stop"}), 0u);
    EXPECT_EQ(host.WaitForExit(), 0u);
    const auto messages = reply.WaitFor(1);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].Text(), L"drained");
    EXPECT_NE(host.Output().find("handled 2, "), std::string::npos) << host.Output();
}

TEST(Host, SurvivesWhatTheLibraryThrows) {
    const CChildProcess host(kProgram, {L"--dll", LibraryPath(L"host_test_library.dll"), L"--workers", L"1"});
    ASSERT_TRUE(host.WaitForOutput(kServing)) << host.Output();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(SendText(L"CMDHL_STD\tfield"));
        ASSERT_TRUE(SendText(L"CMDHL_INT"));
    }
    EXPECT_TRUE(SendText(L"CMDHL_\x1B[31mLOUD"));
    EXPECT_TRUE(SendText(L"CMDHL_FINE"));
    EXPECT_TRUE(SendBytes(L"CMDHL_ODD", 19));
    EXPECT_TRUE(SendText(L"CMDHL_UNKNOWN"));
    EXPECT_EQ(RunHost({L"--stop"}), 0u);
    EXPECT_EQ(host.WaitForExit(), 0u);
    const std::string output = host.Output();
    EXPECT_NE(output.find("[CMDHL_STD] threw: a standard exception"), output.npos) << output;
    EXPECT_NE(output.find("[CMDHL_INT] threw: not a std::exception"), output.npos) << output;
    EXPECT_NE(output.find("[CMDHL_?[31mLOUD] threw: not a std::exception"), output.npos) << output;
    EXPECT_NE(output.find("handled 2, refused 1, threw 41, dropped 0"), output.npos) << output;
}

TEST(Host, GivesUpOnACommandThatIsStuck) {
    const CChildProcess host(kProgram, {L"--dll", LibraryPath(L"host_test_library.dll"), L"--timeout", L"1"});
    ASSERT_TRUE(host.WaitForOutput(kServing)) << host.Output();
    EXPECT_TRUE(SendText(L"CMDHL_STUCK"));
    EXPECT_EQ(RunHost({L"--stop", L"--timeout", L"30"}), 0u);
    EXPECT_EQ(host.WaitForExit(), 4u);
    EXPECT_NE(host.Output().find("a command is still running; giving up"), std::string::npos) << host.Output();
}

TEST(Host, StopTimesOut) {
    const CChildProcess host(kProgram, {L"--dll", LibraryPath(L"host_test_library.dll")});
    ASSERT_TRUE(host.WaitForOutput(kServing)) << host.Output();
    EXPECT_TRUE(SendText(L"CMDHL_STUCK"));
    EXPECT_EQ(RunHost({L"--stop", L"--timeout", L"1"}), 4u);
}

TEST(Host, SaysWhyItDoesNotStart) {
    const struct {
        std::vector<std::wstring> arguments;
        DWORD code;
        const char* output;
    } kCases[] = {
        {{L"--dll", L"no_such.dll"}, 1, "cannot load "},
        {{L"--dll", LibraryPath(L"host_test_lacking.dll")}, 1, "it lacks one of the four exports"},
        {{L"--dll", LibraryPath(L"host_test_library.dll"), L"--debug-ini", L"throw"},
         1,
         "does not start: cannot start"},
        {{L"--workers", L"0"}, 2, "workers"},
        {{L"--workers", L"255"}, 2, "workers"},
        {{L"--no-such-option"}, 2, "no-such-option"},
        {{L"--help"}, 0, "Examples:"},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.output);
        std::string output;
        EXPECT_EQ(RunHost(row.arguments, &output), row.code);
        EXPECT_NE(output.find(row.output), output.npos) << output;
    }
    const CFakePipeService other(kPipe);
    std::string output;
    EXPECT_EQ(RunHost({}, &output), 1u);
    EXPECT_NE(output.find("another program serves the command pipe"), output.npos) << output;
}

}  // namespace
