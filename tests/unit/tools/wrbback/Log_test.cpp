// What is written down: the log files, their lines and settings, and the notes on the console.
#include <gtest/gtest.h>

#include <numeric>
#include <set>
#include <sstream>

#include "LogFiles.h"
#include "LogLevel.h"
#include "LogSettings.h"
#include "LossCount.h"
#include "ManualClock.h"
#include "Notes.h"
#include "ReceivedLine.h"
#include "TempFolder.h"
#include "Text.h"

namespace wrb {
namespace {

using test::TempFolder;

// Lines are words here; files are words of name and content.
TEST(LogFiles, SplitBeforeTheLimitKeepTheLatestAndTouchNoOther) {
    const struct {
        uint64_t splitBytes;
        unsigned maxFiles;
        const char* before;
        const char* lines;
        const char* after;
    } kCases[] = {
        {10, 3, "", "11111 22222 33333 44444 55555 66666 77777",
         "wrbdebug.000002.log=3333344444 wrbdebug.000003.log=5555566666 wrbdebug.log=77777 "},
        {8, 0, "wrbdebug.log=old. wrbdebug.000041.log=1", "new. newer",
         "wrbdebug.000041.log=1 wrbdebug.000042.log=old.new. wrbdebug.log=newer "},
        {4, 0, "", "longer again", "wrbdebug.000001.log=longer wrbdebug.log=again "},
        {1, 1, "wrbdebug.00001.log=1 wrbdebug.00001x.log=2 wrbdebug.000001.log.bak=3 wrbdebug2.000001.log=4", "a b c",
         "wrbdebug.000001.log.bak=3 wrbdebug.00001.log=1 wrbdebug.00001x.log=2 wrbdebug.log=c wrbdebug2.000001.log=4 "},
        {0, 0, "", "a b c", "wrbdebug.log=abc "},
        {1, 3, "wrbdebug.999999999999999.log=foreign wrbdebug.0000001.log=too", "a b c d",
         "wrbdebug.0000001.log=too wrbdebug.000002.log=b wrbdebug.000003.log=c wrbdebug.999999999999999.log=foreign "
         "wrbdebug.log=d "},
        {1, 4, "wrbdebug.000007.log=x wrbdebug.000009.log=y wrbdebug.999999.log=z", "a b c",
         "wrbdebug.000003.log=z wrbdebug.000004.log=a wrbdebug.000005.log=b wrbdebug.log=c "},
    };
    for (const auto& row : kCases) {
        const TempFolder folder;
        std::istringstream before(row.before);
        for (std::string name, content; std::getline(before >> std::ws, name, '=') && before >> content;) {
            test::WriteAll(folder / AnsiToWide(name.c_str()), content);
        }
        LogFiles files(
            {.folder = folder.Path(), .splitBytes = row.splitBytes, .maxFiles = row.maxFiles, .diskSpace = {}});
        std::istringstream lines(row.lines);
        for (std::string line; lines >> line;) {
            ASSERT_EQ(files.Write(line), LogWriteResult::Written);
        }
        std::set<std::string> after;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
            after.insert(entry.path().filename().string() + "=" + test::ReadAll(entry) + " ");
        }
        EXPECT_EQ(std::accumulate(after.begin(), after.end(), std::string()), row.after);
    }
}

TEST(LogFiles, AShortDiskLosesLinesUntilThereIsSpaceAgain) {
    const std::pair<DiskSpace, LogWriteResult> kCases[] = {
        {{999, 0}, LogWriteResult::NoSpace},  // the size counts
        {{1000, 0}, LogWriteResult::Written},
        {{1000, 100'100}, LogWriteResult::NoSpace},  // the percentage counts
        {{1001, 100'100}, LogWriteResult::Written},
    };
    const TempFolder folder;
    DiskSpace space;
    LogFileOptions options{.folder = folder.Path(), .reserveBytes = 1000, .diskSpace = [&](auto&) { return space; }};
    for (const auto& [shown, result] : kCases) {
        LogFiles files(options);
        space = {0, 0};
        EXPECT_EQ(files.Write("lost\n"), LogWriteResult::NoSpace);
        space = shown;
        EXPECT_EQ(files.Write("line\n"), result) << space.available << " of " << space.total;
    }
    EXPECT_EQ(test::ReadAll(folder / L"wrbdebug.log"), "line\nline\n");
    options.folder += L"\\wrbdebug.log\\below";
    EXPECT_EQ(LogFiles(options).Write("line\n"), LogWriteResult::Failed);
}

TEST(LogFiles, AFileThatSomebodyHoldsGrowsByAsMuchOnceMore) {
    const TempFolder folder;
    LogFiles files({.folder = folder.Path(), .splitBytes = 4, .diskSpace = {}});
    files.Write("1111");
    {
        const FileHandle reader(CreateFileW((folder / L"wrbdebug.log").c_str(), GENERIC_READ,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        files.Write("2");
    }
    files.Write("333");
    files.Write("4");
    EXPECT_EQ(test::ReadAll(folder / L"wrbdebug.000001.log"), "11112333");
    EXPECT_EQ(test::ReadAll(folder / L"wrbdebug.log"), "4");
}

TEST(LogSettings, KeysAreReadInTheirUnitsAndNonsenseIsNamed) {
    // The section, the level, and: folder, split size, largest count, reserve in bytes.
    const std::tuple<const char*, const wchar_t*, const wchar_t*> kCases[] = {
        {"DebugLevel=W\nDebugLogFolder=D:\\Logs\nSplitSize=1000\nMaxLogCount=3\nReserveHardDiskSpaceSize=100\n", L"W",
         L"D:\\Logs 1000 3 102400"},
        {"DebugFlags=0\nDebugLevel=D\nDebugLogFolder=\nSplitSize=\n", L"none", L".\\Log\\ 104857600 10 20971520"},
    };
    const TempFolder folder;
    for (const auto& [body, level, rest] : kCases) {
        test::WriteAll(folder / L"debug.ini", std::string("[Debug]\n") + body);
        LogSettings settings;
        EXPECT_EQ(ReadLogSettings((folder / L"debug.ini").wstring(), settings), L"");
        EXPECT_EQ(FilterWordOf(settings), FindLogLevel(WideToUtf8(level))->word);
        const LogFileOptions& files = settings.files;
        EXPECT_EQ(
            FormatWide(L"%s %llu %u %llu", files.folder.c_str(), files.splitBytes, files.maxFiles, files.reserveBytes),
            rest);
    }
    for (const char* wrong : {"DebugFlags=on", "DebugLevel=loud", "SplitSize=10 MB", "MaxLogCount=-1",
                              "ReserveHardDiskSpacePercentage=x", "ReserveHardDiskSpaceSize=99999999999"}) {
        test::WriteAll(folder / L"debug.ini", std::string("[Debug]\n") + wrong);
        LogSettings settings;
        const std::wstring why = ReadLogSettings((folder / L"debug.ini").wstring(), settings);
        EXPECT_TRUE(why.ends_with(Utf8ToWide(std::string(wrong).replace(std::string(wrong).find('='), 1, ": "))))
            << wrong << ": " << WideToUtf8(why);
    }
}

// The line in the file without its date and time.
std::string Shown(const ReceivedLine& line) {
    return FormatLogLine(line).substr(sizeof "1970 01/01 00:00:00" - 1);
}

TEST(LogLine, FieldsOfEveryMessage) {
    const std::string letters(9000, 'x');
    const std::wstring wide(9000, L'x');
    // shown: empty: refused
    const std::pair<std::wstring, std::string> kCases[] = {
        {L"1700000000\t4321\t4294967295\t68\tServer\\x.cpp\t57\t[CMDHL][h.exe]text\tand\tmore",
         " [10e1 : ffffffff] [D] [CMDHL][h.exe]text\\tand\\tmore - [Server\\x.cpp(57)]\r\n"},
        {L"x\t-1\t99999999999999999999\tD\t\t-5\t", " [ffffffff : ffffffff] [F]  - [(-5)]\r\n"},
        {L"1\t2\t3\t4\t" + wide + L"\t6\t" + wide,
         " [0002 : 0003] [E] " + letters.substr(0, 8191) + " - [" + letters.substr(0, 260) + "(6)]\r\n"},
        {L"", ""},
        {L"1\t2\t3\t4\tfile\t6", ""},
        {L"\t\t\t\t\t", ""},
    };
    for (const auto& [fields, shown] : kCases) {
        const auto line = ParseLogLine(fields);
        EXPECT_EQ(line ? Shown(*line) : "", shown) << fields.size();
    }
}

TEST(LogLine, AFileLineIsOneLineWhateverThePeerSends) {
    const std::pair<std::wstring, const char*> kTexts[] = {
        {L"plain \\ path", "plain \\ path"},
        {L"a\r\nb\tc", "a\\r\\nb\\tc"},
        {std::wstring(L"nul\0end", 7), "nul\\u0000end"},
        {L"\x1b[2J", "\\u001B[2J"},
        {L"\x85\x2028\x2029", "\\u0085\\u2028\\u2029"},
        {L"\x202e\x2066\xfeff", "\\u202E\\u2066\\uFEFF"},
        {L"\xfc\x4e2d\xd83d\xde00", "\xC3\xBC\xE4\xB8\xAD\xF0\x9F\x98\x80"},
    };
    for (const auto& [text, shown] : kTexts) {
        EXPECT_EQ(Shown({.level = 'W', .sourceFile = text, .line = 3, .text = text}),
                  std::string(" [0000 : 0000] [W] ") + shown + " - [" + shown + "(3)]\r\n");
    }
}

TEST(LogLine, TimeIsLocalAndNeverFails) {
    const std::time_t seconds = 1700000000;
    char expected[32];
    std::strftime(expected, sizeof expected, "%Y %m/%d %H:%M:%S ", std::localtime(&seconds));
    EXPECT_TRUE(FormatLogLine({.seconds = seconds}).starts_with(expected));
    EXPECT_EQ(ParseLogLine(L"-2147483648\t1\t2\t0\tsource\t3\ttext")->seconds, 1ll << 31);  // in January 2038
    EXPECT_TRUE(FormatLogLine({.seconds = INT32_MIN}).starts_with("1970 01/01 00:00:00 "));
}

TEST(LossCount, TheFirstIsToldAtOnceTheOthersOnceAMinute) {
    ManualClock clock(4294967000);  // wraps within the first minute
    LossCount losses(clock);
    std::vector<uint64_t> told;
    for (const uint32_t wait : {0, 0, 59'999, 1, 1, 1}) {
        clock.AdvanceTick(wait);
        told.push_back(losses.Add());
    }
    told.push_back(losses.Rest());
    told.push_back(losses.Rest());
    EXPECT_EQ(told, (std::vector<uint64_t>{1, 0, 0, 3, 0, 0, 2, 0}));
}

TEST(Notes, AFloodIsHeldBackAndOwnedUpTo) {
    ManualClock clock(4294967000);  // wraps within the first minute
    std::wstring written;
    Notes notes([&](const std::wstring& note) { written += note + L"\n"; }, 2, clock);
    for (const uint32_t wait : {0, 0, 0, 59'999, 1, 60'000}) {
        clock.AdvanceTick(wait);
        notes.Write(std::to_wstring(wait));
    }
    EXPECT_EQ(written, L"0\n0\n2 more notes were held back\n1\n60000\n");
}

}  // namespace
}  // namespace wrb
