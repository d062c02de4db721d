#include "LogFiles.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>
#include <sstream>

#include "LogSettings.h"
#include "ReceivedLine.h"
#include "TempFolder.h"
#include "Text.h"

namespace wrb {
namespace {

using test::CTempFolder;

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
    };
    for (const auto& row : kCases) {
        const CTempFolder folder;
        std::istringstream before(row.before);
        for (std::string name, content; std::getline(before >> std::ws, name, '=') && before >> content;) {
            test::WriteAll(folder / AnsiToWide(name.c_str()), content);
        }
        CLogFiles files(
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
    const struct {
        tagDiskSpace space;
        LogWriteResult result;
    } kCases[] = {
        {{999, 0}, LogWriteResult::NoSpace},  // the size counts
        {{1000, 0}, LogWriteResult::Written},
        {{1000, 100'100}, LogWriteResult::NoSpace},  // the percentage counts
        {{1001, 100'100}, LogWriteResult::Written},
    };
    const CTempFolder folder;
    tagDiskSpace space;
    LogFileOptions options{.folder = folder.Path(), .reserveBytes = 1000, .diskSpace = [&](auto&) { return space; }};
    for (const auto& row : kCases) {
        CLogFiles files(options);
        space = {0, 0};
        EXPECT_EQ(files.Write("lost\n"), LogWriteResult::NoSpace);
        space = row.space;
        EXPECT_EQ(files.Write("line\n"), row.result) << space.available << " of " << space.total;
    }
    EXPECT_EQ(test::ReadAll(folder / L"wrbdebug.log"), "line\nline\n");
    options.folder += L"\\wrbdebug.log\\below";
    EXPECT_EQ(CLogFiles(options).Write("line\n"), LogWriteResult::Failed);
}

TEST(LogSettings, KeysAreReadInTheirUnitsAndNonsenseKeepsTheDefaults) {
    const struct {
        const char* body;
        const wchar_t* level;
        const wchar_t* rest;  // folder, split size, largest count, reserve in bytes
    } kCases[] = {
        {"DebugLevel=W\nDebugLogFolder=D:\\Logs\nSplitSize=1000\nMaxLogCount=3\nReserveHardDiskSpaceSize=100\n", L"W",
         L"D:\\Logs 1000 3 102400"},
        {"DebugLevel=loud\nDebugLogFolder=\nSplitSize=10 MB\nMaxLogCount=-1\nReserveHardDiskSpaceSize=\n", L"all",
         L".\\Log\\ 104857600 10 20971520"},
        {"DebugFlags=0\nDebugLevel=D\nSplitSize=99999999999\nMaxLogCount=x\n", L"none",
         L".\\Log\\ 104857600 10 20971520"},
    };
    const CTempFolder folder;
    for (const auto& row : kCases) {
        test::WriteAll(folder / L"debug.ini", std::string("[Debug]\n") + row.body);
        LogSettings settings;
        EXPECT_TRUE(ReadLogSettings((folder / L"debug.ini").wstring(), settings));
        EXPECT_EQ(FilterWordOf(settings), ParseLogLevel(row.level));
        const LogFileOptions& files = settings.files;
        EXPECT_EQ(files.folder + L" " + std::to_wstring(files.splitBytes) + L" " + std::to_wstring(files.maxFiles) +
                      L" " + std::to_wstring(files.reserveBytes),
                  row.rest);
    }
}

}  // namespace
}  // namespace wrb
