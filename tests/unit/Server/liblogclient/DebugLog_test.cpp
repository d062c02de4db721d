// Lines on their way to the log service.
#include "DebugLog.h"

#include <gtest/gtest.h>

#include <ctime>
#include <map>
#include <thread>

#include "FakeLogService.h"

using wrb::test::CFakeLogService;
using wrb::test::CFakePipeService;
using wrb::test::tagLogMessage;

namespace {

const std::wstring kPrefix = L"[CMDHL][liblogclient_test.exe]";

class DebugLogTest : public testing::Test {
  protected:
    ~DebugLogTest() override { wrb::CLogFilter::Shared().Set(0); }

    std::wstring OnlyText() {
        const auto lines = m_service.TakeLines();
        EXPECT_EQ(lines.size(), 1u);
        return lines.empty() ? std::wstring() : lines[0].text;
    }

    CFakeLogService m_service{"CMDHL"};
};

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

TEST_F(DebugLogTest, TheMacroNamesItsOwnPlace) {
    WRB_LOG(kLogNotice5, L"no arguments");
    const uint32_t here = __LINE__ - 1;
    const auto lines = m_service.TakeLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].sourceFile, L"tests\\unit\\Server\\liblogclient\\DebugLog_test.cpp");
    EXPECT_EQ(lines[0].line, here);
    EXPECT_EQ(lines[0].level, 5u);
}

TEST_F(DebugLogTest, TheNarrowTwinBehavesTheSame) {
    DebugLogA('E', L"x.cpp", 7, "%s %S %d", "narrow", L"wide", 9);
    const auto lines = m_service.TakeLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].text, kPrefix + L"narrow wide 9");
    EXPECT_EQ(lines[0].level, uint32_t{'E'});
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

TEST_F(DebugLogTest, NullTextsAndEmptyLinesDoNoHarm) {
    DebugLog('E', nullptr, 0, L"");
    const auto lines = m_service.TakeLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].sourceFile, L"");
    EXPECT_EQ(lines[0].text, kPrefix);
}

TEST_F(DebugLogTest, TheFilterWordRulesWhatArrives) {
    const auto arrived = [this] {
        for (const uint32_t level :
             {5u, 8u, uint32_t{'D'}, uint32_t{'E'}, uint32_t{'I'}, uint32_t{'W'}, uint32_t{'N'}, 256u}) {
            DebugLog(level, L"x.cpp", 1, L"line");
        }
        std::vector<uint32_t> levels;
        for (const tagLogMessage& line : m_service.TakeLines()) {
            levels.push_back(line.level);
        }
        return levels;
    };
    auto& filter = wrb::CLogFilter::Shared();
    const std::vector<uint32_t> all = {5, 8, 'D', 'E', 'I', 'W', 'N', 256};
    EXPECT_EQ(arrived(), all);
    filter.Set(wrb::LogFilterWord(8));
    EXPECT_EQ(arrived(), (std::vector<uint32_t>{5, 'E', 'I', 'W', 'N', 256}));
    filter.Set(wrb::LogFilterWord(-1));
    EXPECT_EQ(arrived(), (std::vector<uint32_t>{'N', 256}));
    filter.Set(wrb::LogFilterWord(-2));
    EXPECT_EQ(arrived(), (std::vector<uint32_t>{256}));
    filter.Set(0);
    EXPECT_EQ(arrived(), all);
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

TEST_F(DebugLogTest, TheSetUpMayChangeWhileThreadsLog) {
    std::thread setups([] {
        for (int i = 0; i < 200; ++i) {
            DebugLogSetup(L"debug.ini", L"", i % 2 == 0 ? "EVEN" : "ODD", true);
        }
    });
    for (int i = 0; i < 100; ++i) {
        WRB_LOG('I', L"%d", i);
    }
    setups.join();
    int expected = 0;
    for (const std::wstring& text : m_service.TakeTexts()) {
        EXPECT_EQ(text, std::to_wstring(expected++));
    }
    EXPECT_EQ(expected, 100);
}

TEST_F(DebugLogTest, ALongModuleTagIsCutAndLeavesRoomForNothingElseToBreak) {
    DebugLogSetup(L"", L"", std::string(5'000, 't').c_str(), true);
    WRB_LOG('I', L"text");
    EXPECT_EQ(OnlyText(), L"[" + std::wstring(1023, L't') + L"][liblogclient_test.exe]text");
}

}  // namespace
