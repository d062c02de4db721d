// Recordings: made beside the running services, replayed, decoded.
#include <algorithm>

#include "BackEnd.h"
#include "HostProcess.h"
#include "RecordingFormat.h"
#include "ServerHome.h"
#include "Text.h"

namespace wrb::test {
namespace {

constexpr wchar_t kCtl[] = L"wrbctl.exe";

// wrbctl, recording.
struct Recorder : ChildProcess {
    Recorder(const std::wstring& file, const std::vector<std::wstring>& more)
        : ChildProcess(kCtl, Arguments(file, more)) {
        EXPECT_TRUE(WaitForOutput("recording until")) << Output();
    }
    static std::vector<std::wstring> Arguments(const std::wstring& file, const std::vector<std::wstring>& more) {
        std::vector<std::wstring> arguments = {L"record", file};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    void ExpectEnd(const char* part) const {
        EXPECT_EQ(WaitForExit(), 0u) << Output();
        EXPECT_NE(Output().find(part), std::string::npos) << Output();
    }
};

bool HoldsWide(const std::string& bytes, const std::wstring& text) {
    return bytes.find(std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t))) !=
           std::string::npos;
}

TEST(Record, ARecordingIsReplayedComparedAndDecoded) {
    const ServerHome home;
    home.Write(L"Private\\wrbserver.ini",
               "[INI_SERVER_SECTION]\r\nStringProtectionKey=" + std::string(64, '7') + "\r\n");
    const std::wstring plain = home / L"plain.wrbrec";
    const std::wstring masked = home / L"masked.wrbrec";
    ExpectRun(kCtl, {L"record", plain}, 3, "the host does not run");
    const BackEnd backEnd;
    const Host host({});
    const std::wstring uid = kFullAgent;
    {
        const Recorder recorder(plain, {L"--count", L"5"});
        ExpectRun(kCtl, {L"record", masked}, 1, "another program records already");
        EXPECT_EQ(Ask(L"CMDHL_GET_MS_CFG", kUnknownAgent), L"");
        EXPECT_NE(Ask(L"CMDHL_GET_MS_CFG", kFullAgent), L"");
        EXPECT_NE(Ask(L"CMDHL_GET_WTP_SETTING", kFullAgent), L"");
        EXPECT_TRUE(SendText(L"CMDHL_SERVER_AUTH_SET_LOG_NO"));
        EXPECT_TRUE(SendText(L"CMDHL_SET_MAILSCAN_RT_CFG\t" + uid + L"\t1"));
        recorder.ExpectEnd("5 commands in ");
    }
    EXPECT_FALSE(std::filesystem::exists(masked));
    ExpectRun(kCtl, {L"record", plain, L"--count", L"1"}, 1, "cannot make");
    ExpectRun(kCtl, {L"replay", plain, L"--speed", L"0", L"--compare"}, 0,
              "CMDHL_GET_WTP_SETTING      1     0       0");
    {
        const Recorder recorder(masked, {L"--mask", L"--count", L"2", L"--command", L"get_ms"});
        ExpectRun(kCtl, {L"replay", plain, L"--threads", L"1"}, 0, "(unknown)");
        recorder.ExpectEnd("2 commands in ");
    }
    EXPECT_TRUE(HoldsWide(ReadAll(plain), uid));
    EXPECT_FALSE(HoldsWide(ReadAll(masked), uid));
    EXPECT_TRUE(HoldsWide(ReadAll(masked), L"[Manual Scan Configuration]\nUID="));
    ExpectRun(kCtl, {L"replay", masked, L"--compare"}, 1, "-[Manual Scan Configuration]\n");

    ExpectRun(kCtl, {L"set", uid, L"MSCfg.OleLayer=9", L"--yes"}, 0);
    const std::string differs =
        ExpectRun(kCtl, {L"replay", plain, L"--speed", L"0", L"--compare"}, 1, "\n-OleLayer=3\n+OleLayer=9\n");
    EXPECT_NE(differs.find("--- 2 CMDHL_GET_MS_CFG " + WideToUtf8(uid) + " recorded\n+++ 2 "), differs.npos) << differs;
    ExpectRun(kCtl, {L"replay", plain, L"--compare", L"--uid", kUnknownAgent}, 0);
    ExpectRun(kCtl, {L"replay", plain, L"--compare", L"--json"}, 1, R"("differ":1)");

    ExpectRun(kCtl, {L"decode", plain}, 0, "#2 answer: line 1");
    ExpectRun(kCtl, {L"decode", L"0400", L"--json"}, 1, R"("problem" : "none of the formats)");
    ExpectRun(kCtl, {L"decode", L"12 3"}, 2, "neither a file nor hexadecimal digits");
    const std::string bytes = ReadAll(plain);
    WriteAll(plain, bytes.substr(0, bytes.size() - 1));
    ExpectRun(kCtl, {L"decode", plain}, 1, "is cut short");
    ExpectRun(kCtl, {L"replay", plain, L"--command", L"none"}, 0, "the recording lacks its end");
    ExpectRun(kCtl, {L"replay", kCtl}, 2);
    const Recorder last(home / L"last.wrbrec", {});
    host.ExpectEnd(0, {});
    EXPECT_EQ(last.WaitForExit(), 3u);
    EXPECT_NE(last.Output().find("the host has ended"), std::string::npos);
    ExpectRun(kCtl, {L"replay", masked}, 3, "the host is not running");
}

std::string CommandRecord(const std::wstring& message, const std::wstring& answer, uint32_t flags) {
    RecordedCommand command;
    command.flags = flags;
    command.messageBytes = static_cast<uint32_t>(message.size() * sizeof(wchar_t));
    command.answerBytes = static_cast<uint32_t>(answer.size() * sizeof(wchar_t));
    command.head.bytes += command.messageBytes + command.answerBytes;
    return std::string(reinterpret_cast<const char*>(&command), sizeof command) +
           std::string(reinterpret_cast<const char*>(message.data()), command.messageBytes) +
           std::string(reinterpret_cast<const char*>(answer.data()), command.answerBytes);
}

// The host runs both at the same time, unless the second one waits for the end of the first.
TEST(Record, WhatAnAgentStoresAndThenReadsIsComparedAfterItIsStored) {
    const BackEnd backEnd;
    const Host host({});
    const TempFolder folder;
    const std::wstring set = std::wstring(L"CMDHL_SET_MS_CFG_EX\t") + kFullAgent + L"\t1\tC:\\";
    const RecordingHead head;
    std::string file(reinterpret_cast<const char*>(&head), sizeof head);
    for (const wchar_t* folderName : {L"a", L"b", L"c", L"d", L"e", L"f"}) {
        std::wstring answer;
        EXPECT_TRUE(SendText(set + folderName));
        while (answer.find(std::wstring(L"CallowayProduct=1\nExcludedFolder=C:\\") + folderName + L"\n") ==
               answer.npos) {
            answer = Ask(L"CMDHL_GET_MS_CFG_EX", kFullAgent);
            ASSERT_NE(answer, L"");
        }
        file += CommandRecord(set + folderName, L"", 0);
        file += CommandRecord(std::wstring(L"CMDHL_GET_MS_CFG_EX\tpipe\t") + kFullAgent, answer, kRecordedAnswered);
    }
    WriteAll(folder / L"pairs", file);
    ExpectRun(kCtl, {L"replay", folder / L"pairs", L"--speed", L"0", L"--compare"}, 0, "CMDHL_SET_MS_CFG_EX  6 ");
}

}  // namespace
}  // namespace wrb::test
