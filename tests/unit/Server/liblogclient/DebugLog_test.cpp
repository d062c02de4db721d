// Which lines are admitted, and their way to the log service.
#include "DebugLog.h"

#include <gmock/gmock.h>

#include <array>
#include <ctime>
#include <regex>

#include "AllocationCount.h"
#include "FailedCalls.h"
#include "FakeDbService.h"
#include "FakePipeService.h"
#include "LogBreaker.h"
#include "LogFilter.h"
#include "LoggerState.h"
#include "OnThreads.h"
#include "TempFolder.h"
#include "Text.h"
#include "UniqueName.h"
#include "logcl_command.h"

namespace wrb::test {
namespace {

TEST(LogFilter, EveryLevelIsHeldAgainstTheThresholdByTheRankOfItsClass) {
    const std::pair<std::vector<uint32_t>, int> classes[] = {
        {{'N'}, -1},   {{0, 1, 2, 'F'}, 2}, {{3, 4, 'E'}, 4},
        {{5, 'W'}, 5}, {{6, 7, 'I'}, 7},    {{8, 'D', 9, 10, 'e', 'd', 'f', 'i', 'n', 'w', 'A', 255}, 9},
    };
    for (const auto& [levels, rank] : classes) {
        for (const uint32_t level : levels) {
            for (int16_t threshold = -3; threshold <= 12; ++threshold) {
                EXPECT_EQ(LogFilterAdmits(LogFilterWord(threshold), level), rank <= threshold)
                    << "level " << level << " at " << threshold;
            }
            EXPECT_FALSE(LogFilterAdmits(LogFilterWord(INT16_MIN), level));
            EXPECT_TRUE(LogFilterAdmits(LogFilterWord(INT16_MAX), level));
            EXPECT_TRUE(LogFilterAdmits(0xFFFE'0000, level)) << "without bit 16 there is no filter";
        }
    }
    for (const uint32_t level : {256u, 300u, 0x10044u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(LogFilterAdmits(LogFilterWord(INT16_MIN), level)) << level;
    }
}

// What another process of the system sees and sets.
TEST(LogFilter, TheWordIsSharedUnderItsName) {
    LogFilter& filter = LogFilter::Shared();
    const KernelHandle section(OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, L"Global\\log_level_map_file"));
    ASSERT_TRUE(section);
    const MappedView view(MapViewOfFile(section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, 4));
    ASSERT_TRUE(view);
    auto* const word = static_cast<volatile uint32_t*>(view.Get());

    *word = LogFilterWord(4);
    EXPECT_EQ(filter.Word(), 0x10004u);
    EXPECT_FALSE(filter.Admits('W'));
    EXPECT_TRUE(filter.Set(LogFilterWord(5)));
    EXPECT_EQ(*word, 0x10005u);
    EXPECT_TRUE(filter.Admits('W'));
    filter.Set(0);
}

TEST(LogFilter, ALineThatIsFilteredOutAllocatesNothingAndEvaluatesNothing) {
    ASSERT_TRUE(LogFilter::Shared().Set(LogFilterWord(5)));
    int evaluated = 0;
    SetLastError(ERROR_CRC);
    const std::size_t before = AllocationsOfThisThread();
    for (int i = 0; i < 1'000; ++i) {
        WRB_LOG(kLogDebug, L"%d", ++evaluated);
        DebugLog(kLogDebug8, L"file", 1, L"%s", L"text");
        DebugLogA(kLogInfo, L"file", 1, "%s", "text");
    }
    EXPECT_EQ(AllocationsOfThisThread(), before);
    EXPECT_EQ(evaluated, 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
    LogFilter::Shared().Set(0);
}

const std::wstring kPrefix = L"[CMDHL][liblogclient_test.exe]";

constexpr uint32_t kPatience = 30'000;

void LimitLines(uint32_t milliseconds) {
    LoggerState::Shared().Replace([=](LoggerSetup& setup) { setup.waitMilliseconds = milliseconds; });
}

class DebugLogTest : public testing::Test {
  protected:
    DebugLogTest() {
        DebugLogSetup(L"", L"", "CMDHL", true);
        LimitLines(kPatience);
    }
    ~DebugLogTest() override { DebugLogSetup(L"", L"", "", false); }

    const FakePipeService m_service{L"Log_ServerNamePipe"};
};

TEST(LogWrite, AMessageIsItsFieldsBetweenTabsAndATerminatingZero) {
    constexpr LogLine kLine = {-1, 4'294'967'295u, 12, 68, L"a.cpp", 4'294'967'295u, L"[T][h]text"};
    const FakePipeService service(L"Log_ServerNamePipe");
    EXPECT_EQ(logcl_Write(kLine, nullptr, kPatience), 1);
    const std::wstring expected(L"LOG_WRITE\t-1\t4294967295\t12\t68\ta.cpp\t-1\t[T][h]text\0", 50);
    EXPECT_EQ(service.WaitFor(1).at(0).bytes, WideBytes(expected));
}

TEST(LogWrite, AMissingServiceIsNotedOnceWhereThereIsSomebodyToNoteIt) {
    struct Notes final : IExternalLog {
        void Trace(const wchar_t*, uint32_t, uint32_t, const wchar_t* text) const override { texts.emplace_back(text); }
        mutable std::vector<std::wstring> texts;
    } const notes;
    for (const Notes* external : {static_cast<const Notes*>(nullptr), &notes, &notes}) {
        EXPECT_EQ(logcl_Write({0, 1, 2, 68, L"a.cpp", 3, L"text"}, external, kPatience), 0);
    }
    EXPECT_EQ(notes.texts, std::vector<std::wstring>{L"Need to Start LogServer for turn on debug log."});
}

TEST(LogBreaker, ALineThatTookTooLongStopsTheLinesOfOneSecond) {
    LogBreaker breaker;
    EXPECT_FALSE(breaker.Skips(0));
    EXPECT_EQ(breaker.TakeLost(), 0u);
    constexpr uint32_t kStart = 0xFFFF'FF00;  // the clock wraps in that second
    breaker.Trip(kStart - 5);
    breaker.Trip(kStart);
    const std::pair<uint32_t, bool> cases[] = {{0, true}, {995, true}, {999, true}, {1000, false}, {0, false}};
    for (const auto& [elapsed, skips] : cases) {
        EXPECT_EQ(breaker.Skips(kStart + elapsed), skips) << elapsed;
    }
    EXPECT_EQ(breaker.TakeLost(), 5u);
    EXPECT_EQ(breaker.TakeLost(), 0u);
}

TEST(LogBreaker, SlowLinesThatAddUpStopTheLinesOfOneSecond) {
    const struct {
        uint32_t waited;
        uint32_t apart;
        int lines;  // until it trips; 0: never
    } cases[] = {{19, 20, 11}, {20, 20, 10}, {5, 5, 40}, {4, 1, 0}, {19, 100, 0}, {0, 0, 0}};
    for (const auto& row : cases) {
        LogBreaker breaker;
        uint32_t now = 0xFFFF'FF00;  // the clock wraps
        int lines = 0;
        while (lines < 1'000 && !breaker.Skips(now)) {
            now += row.apart;
            breaker.Waited(now, row.waited, 20);
            ++lines;
        }
        EXPECT_EQ(lines, row.lines != 0 ? row.lines : 1'000) << row.waited << " " << row.apart;
        EXPECT_EQ(breaker.TakeLost(), row.lines != 0 ? 1u : 0u) << "the line that finds it tripped";
        EXPECT_FALSE(breaker.Skips(now + 1'000));
    }
}

// It takes no further client, or takes one and does not read. Lines are numbered.
TEST(LogWrite, AServiceThatHangsLosesLinesAndTheNextOneToArriveIsPrecededByTheirNumber) {
    DebugLogSetup(L"", L"", "CMDHL", true);
    for (const bool takesNoClient : {true, false}) {
        LimitLines(20);
        int line = 0;
        const auto write = [&] { DebugLog(kLogInfo, L"x.cpp", 1, L"%s:%d", std::wstring(2000, L'x').c_str(), line++); };
        {
            const FileHandle hung(CreateNamedPipeW(L"\\\\.\\pipe\\Log_ServerNamePipe", PIPE_ACCESS_INBOUND,
                                                   PIPE_TYPE_MESSAGE, 1, 1024, 1024, NMPWAIT_WAIT_FOREVER, nullptr));
            const FileHandle client = takesNoClient ? OpenPipeForWriting(L"Log_ServerNamePipe") : FileHandle();
            while (line < 5) {
                write();
            }
        }
        LimitLines(kPatience);
        const FakePipeService service(L"Log_ServerNamePipe");
        while (service.WaitFor(0).empty()) {
            write();
            Sleep(10);
        }
        const auto lines = service.WaitFor(2);
        ASSERT_GE(lines.size(), 2u);
        const std::wstring second = lines[1].Text();
        const std::wstring lost = second.substr(second.rfind(L':') + 1);
        EXPECT_GE(std::stoi(lost), 5);
        EXPECT_THAT(lines[0].Text(), testing::HasSubstr(L"\t87\t"));
        EXPECT_TRUE(lines[0].Text().ends_with(L"\t" + kPrefix + lost + L" log lines lost")) << lost.c_str();
    }
}

TEST_F(DebugLogTest, ALineArrivesFieldByField) {
    const auto before = static_cast<int32_t>(std::time(nullptr));
    DebugLog(68, L"Server\\x.cpp", 4'000'000'000u, L"[f] %s\t%d %S", L"wide", -5, "narrow");
    const std::wstring line = m_service.WaitFor(1).at(0).Text();
    const int seconds = std::stoi(line.substr(sizeof "LOG_WRITE"));
    EXPECT_TRUE(seconds >= before && seconds <= before + 60) << seconds;
    EXPECT_EQ(line, FormatWide(L"LOG_WRITE\t%d\t%u\t%u\t68\tServer\\x.cpp\t-294967296\t%s[f] wide\t-5 narrow", seconds,
                               GetCurrentProcessId(), GetCurrentThreadId(), kPrefix.c_str()));
}

TEST_F(DebugLogTest, TheWholeTextIsCutAt4095Characters) {
    const std::size_t room = 4095 - kPrefix.size();
    std::size_t count = 0;
    for (const std::size_t length : {room - 1, room, room + 1, std::size_t{4096}, std::size_t{100'000}}) {
        const std::wstring wide(length, L'w');
        const std::string narrow(length, 'n');
        DebugLog('E', L"x.cpp", 1, L"%s", wide.c_str());
        DebugLogA('E', L"x.cpp", 1, "%s", narrow.c_str());
        const auto lines = m_service.WaitFor(count += 2);
        ASSERT_EQ(lines.size(), count);
        const std::size_t kept = std::min(length, room);
        EXPECT_TRUE(lines[count - 2].Text().ends_with(L"\t" + kPrefix + wide.substr(0, kept))) << length;
        EXPECT_TRUE(lines[count - 1].Text().ends_with(L"\t" + kPrefix + std::wstring(kept, L'n'))) << length;
    }
}

TEST_F(DebugLogTest, AMirrorFileGetsTheLineAsWell) {
    const std::wstring path = UniqueName(L"mirror") + L".log";
    ASSERT_TRUE(DebugLogAttachMirror(path.c_str()));
    DebugLog('E', L"x.cpp", 12, L"first");
    ASSERT_TRUE(DebugLogAttachMirror(nullptr));
    const std::string bytes = ReadAll(path);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    const std::wstring pattern = L"\xFEFF\\d{4} \\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d \\[" +
                                 FormatWide(L"%04x : %04x", GetCurrentProcessId(), GetCurrentThreadId()) +
                                 L"\\] \\[CMDHL\\]\\[liblogclient_test.exe\\]first - \\[x.cpp\\(12\\)\\]\r\n";
    EXPECT_TRUE(std::regex_match(Received{bytes, {}}.Text(), std::wregex(pattern))) << bytes;
}

std::vector<std::wstring> g_calls;  // of the external library

void NoteCall(const wchar_t* sourceFile, uint32_t line, uint32_t level, const wchar_t* text, const char* ini) {
    g_calls.push_back(ini != nullptr ? FormatWide(L"ini %S", ini)
                                     : FormatWide(L"%s|%u|%u|%s", sourceFile, line, level, text));
}

TEST_F(DebugLogTest, AnExternalLibraryGetsTheLinesInsteadOfTheService) {
    const ModuleHandle library(LoadLibraryW(L"external_log_library.dll"));
    ASSERT_TRUE(library) << GetLastError();
    using NoteCalls = void (*)(decltype(&NoteCall));
    const FARPROC noteCalls = GetProcAddress(library.Get(), "NoteCalls");
    reinterpret_cast<NoteCalls>(reinterpret_cast<void*>(noteCalls))(NoteCall);
    g_calls.clear();
    EXPECT_EQ(DebugLogSetup(L"debug.ini", L"external_log_library.dll", "TAG", false), 1);
    DebugLog(kLogError, L"x.cpp", 12, L"wide %d", 1);
    DebugLogA(kLogDebug8, L"y.cpp", 13, "narrow");
    EXPECT_EQ(DebugLogSetup(L"", L"external_log_library.dll", "TAG", true), 0) << "the internal log again";
    DebugLog(kLogError, L"z.cpp", 14, L"to the service");
    EXPECT_EQ(DebugLogSetup(L"", L"no_such_library.dll", "TAG", false), 0);
    DebugLog(kLogError, L"z.cpp", 15, L"to nobody");
    const std::wstring prefix = L"[TAG][liblogclient_test.exe]";
    EXPECT_THAT(g_calls, testing::ElementsAre(L"ini debug.ini", L"x.cpp|12|69|" + prefix + L"wide 1",
                                              L"y.cpp|13|8|" + prefix + L"narrow"));
    EXPECT_EQ(m_service.WaitFor(1).size(), 1u);
}

TEST_F(DebugLogTest, ACallOfTheSystemThatFailsLosesOneLineWhichIsCounted) {
    unsigned lines = 0;
    const auto write = [&] {
        ++lines;
        DebugLog(kLogInfo, L"x.cpp", 1, L"line");
    };
    const unsigned failures =
        FailEachCall({"CreateFileW", "SetNamedPipeHandleState", "WriteFile"}, FailsOn::ThisThread, write, write);
    EXPECT_GE(failures, 6u);
    const auto texts = m_service.WaitFor(lines + 4);  // where one of the last two fails, nothing is written
    const auto ending = [&](const wchar_t* end) {
        return std::ranges::count_if(texts, [end](const Received& line) { return line.Text().ends_with(end); });
    };
    EXPECT_EQ(ending(L"]1 log lines lost"), failures);
    EXPECT_EQ(ending(L"]line"), lines - failures);
}

TEST_F(DebugLogTest, KeepsTheLastError) {
    SetLastError(ERROR_CRC);
    WRB_LOG('E', L"x");
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
    DebugLogSetup(L"", L"", "CMDHL", true);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
}

TEST_F(DebugLogTest, EightThreadsNeverMixTheirLines) {
    constexpr unsigned kThreads = 8;
    constexpr int kLines = 60;
    const auto text = [](unsigned thread, int line) {
        return std::to_wstring(thread) + L":" + std::wstring(1200 + thread, L'a') + L":" + std::to_wstring(line);
    };
    OnThreads(kThreads, [&](unsigned thread) {
        for (int i = 0; i < kLines; ++i) {
            DebugLog('I', L"x.cpp", thread, L"%s", text(thread, i).c_str());
        }
    });
    std::array<int, kThreads> next{};
    for (const Received& received : m_service.WaitFor(kThreads * kLines)) {
        const std::wstring line = received.Text();
        const auto thread = static_cast<unsigned>(std::stoul(line.substr(line.find(L"x.cpp\t") + 6)));
        EXPECT_TRUE(line.ends_with(L"\t" + kPrefix + text(thread, next.at(thread)++)));
    }
    EXPECT_THAT(next, testing::Each(kLines));
}

}  // namespace
}  // namespace wrb::test
