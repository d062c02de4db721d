// Lines on their way to the log service.
#include "DebugLog.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <thread>

#include "FakeLogService.h"
#include "Text.h"
#include "UniqueName.h"
#include "logcl_command.h"

using wrb::test::CFakeLogService;
using wrb::test::CFakePipeService;
using wrb::test::tagLogMessage;

namespace {

const std::wstring kPrefix = L"[CMDHL][liblogclient_test.exe]";

class DebugLogTest : public testing::Test {
  protected:
    CFakeLogService m_service{"CMDHL"};
};

TEST(LogWrite, AMessageIsItsFieldsBetweenTabsAndATerminatingZero) {
    constexpr tagLogLine kLine = {-1, 4'294'967'295u, 12, 68, L"a.cpp", 4'294'967'295u, L"[T][h]text"};
    const CFakePipeService service(L"Log_ServerNamePipe");
    EXPECT_EQ(logcl_Write(kLine, nullptr), 1);
    const auto messages = service.WaitFor(1);
    ASSERT_EQ(messages.size(), 1u);
    const std::wstring expected = L"LOG_WRITE\t-1\t4294967295\t12\t68\ta.cpp\t-1\t[T][h]text";
    EXPECT_EQ(messages[0].bytes,
              std::string(reinterpret_cast<const char*>(expected.c_str()), (expected.size() + 1) * sizeof(wchar_t)));
}

TEST_F(DebugLogTest, ALineArrivesFieldByField) {
    const auto before = static_cast<int32_t>(std::time(nullptr));
    DebugLog(68, L"Server\\x.cpp", 4'000'000'000u, L"[f] %s\t%d %S", L"wide", -5, "narrow");
    const auto lines = m_service.TakeLines();
    ASSERT_EQ(lines.size(), 1u);
    const tagLogMessage& line = lines[0];
    EXPECT_EQ(line.command, L"LOG_WRITE");
    EXPECT_GE(line.seconds, before);
    EXPECT_LE(line.seconds, before + 60);
    EXPECT_EQ(line.process, GetCurrentProcessId());
    EXPECT_EQ(line.thread, GetCurrentThreadId());
    EXPECT_EQ(line.level, 68u);
    EXPECT_EQ(line.sourceFile, L"Server\\x.cpp");
    EXPECT_EQ(line.line, 4'000'000'000u);  // as a signed number on the wire
    EXPECT_EQ(line.text, kPrefix + L"[f] wide\t-5 narrow");
}

TEST_F(DebugLogTest, TheWholeTextIsCutAt4095Characters) {
    const std::size_t room = 4095 - kPrefix.size();
    for (const std::size_t length : {room - 1, room, room + 1, std::size_t{4096}, std::size_t{100'000}}) {
        const std::wstring wide(length, L'w');
        const std::string narrow(length, 'n');
        DebugLog('E', L"x.cpp", 1, L"%s", wide.c_str());
        DebugLogA('E', L"x.cpp", 1, "%s", narrow.c_str());
        const auto lines = m_service.TakeLines();
        ASSERT_EQ(lines.size(), 2u);
        const std::size_t kept = std::min(length, room);
        EXPECT_TRUE(lines[0].text == kPrefix + wide.substr(0, kept)) << length << ": " << lines[0].text.size();
        EXPECT_TRUE(lines[1].text == kPrefix + std::wstring(kept, L'n')) << length << ": " << lines[1].text.size();
    }
}

TEST_F(DebugLogTest, AMirrorFileGetsTheLineAsWell) {
    const std::wstring path = wrb::test::UniqueName(L"mirror") + L".log";
    ASSERT_TRUE(DebugLogAttachMirror(path.c_str()));
    DebugLog('E', L"x.cpp", 12, L"first");
    ASSERT_TRUE(DebugLogAttachMirror(nullptr));
    std::ifstream file(wrb::WideToAnsi(path), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    file.close();
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    const std::wstring pattern = L"\xFEFF\\d{4} \\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d \\[" +
                                 wrb::FormatWide(L"%04x : %04x", GetCurrentProcessId(), GetCurrentThreadId()) +
                                 L"\\] \\[CMDHL\\]\\[liblogclient_test.exe\\]first - \\[x.cpp\\(12\\)\\]\r\n";
    EXPECT_TRUE(std::regex_match(wrb::test::tagReceived{bytes, {}}.Text(), std::wregex(pattern))) << bytes;
}

TEST_F(DebugLogTest, KeepsTheLastError) {
    SetLastError(ERROR_CRC);
    WRB_LOG('E', L"x");
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
    DebugLogSetup(L"", L"", "CMDHL", true);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
}

TEST_F(DebugLogTest, EightThreadsNeverMixTheirLines) {
    constexpr int kThreads = 8;
    constexpr int kLines = 60;
    const auto text = [](int thread, int line) {
        return std::to_wstring(thread) + L":" + std::wstring(static_cast<std::size_t>(1200 + thread), L'a') + L":" +
               std::to_wstring(line);
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kLines; ++i) {
                DebugLog('I', L"x.cpp", static_cast<uint32_t>(t), L"%s", text(t, i).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::map<uint32_t, int> next;
    for (const tagLogMessage& line : m_service.TakeLines()) {
        const int thread = static_cast<int>(line.line);
        EXPECT_EQ(line.text, kPrefix + text(thread, next[line.line]++));
    }
    ASSERT_EQ(next.size(), std::size_t{kThreads});
    for (const auto& [thread, count] : next) {
        EXPECT_EQ(count, kLines) << thread;
    }
}

}  // namespace
