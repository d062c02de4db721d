#include "LogFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "LogFilter.h"
#include "LogSettings.h"
#include "ReceivedLine.h"
#include "TempFolder.h"

namespace wrb {
namespace {

using test::CTempFolder;
using test::ReadAll;
using test::WriteAll;
using testing::ElementsAre;

struct CLogFilesTest : testing::Test {
    LogFileOptions Options(uint64_t splitBytes, unsigned maxFiles) {
        LogFileOptions options;
        options.folder = folder.Path();
        options.splitBytes = splitBytes;
        options.maxFiles = maxFiles;
        options.reserveBytes = 1000;
        options.diskSpace = [this](const std::wstring&) { return space; };
        return options;
    }
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
    std::string Read(const wchar_t* name) const { return ReadAll(folder / name); }

    CTempFolder folder;
    tagDiskSpace space{1'000'000, 10'000'000};
};

TEST_F(CLogFilesTest, SplitsBeforeTheLimitAndKeepsTheLatest) {
    CLogFiles files(Options(10, 3));
    for (const char* line : {"1234\n", "5678\n", "abcd\n", "efgh\n", "ijkl\n", "mnop\n", "qrst\n"}) {
        ASSERT_EQ(files.Write(line), LogWriteResult::Written);
    }
    EXPECT_THAT(Names(), ElementsAre("wrbdebug.000002.log", "wrbdebug.000003.log", "wrbdebug.log"));
    EXPECT_EQ(Read(L"wrbdebug.000002.log"), "abcd\nefgh\n");
    EXPECT_EQ(Read(L"wrbdebug.000003.log"), "ijkl\nmnop\n");
    EXPECT_EQ(Read(L"wrbdebug.log"), "qrst\n");
}

TEST_F(CLogFilesTest, GoesOnWhereTheLastRunEnded) {
    WriteAll(folder / L"wrbdebug.log", "old\n");
    WriteAll(folder / L"wrbdebug.000041.log", "older\n");
    CLogFiles files(Options(8, 0));
    files.Write("new\n");
    files.Write("newer\n");
    EXPECT_EQ(Read(L"wrbdebug.000042.log"), "old\nnew\n");
    EXPECT_EQ(Read(L"wrbdebug.log"), "newer\n");
}

TEST_F(CLogFilesTest, ALineLongerThanTheLimitHasAFileForItself) {
    CLogFiles files(Options(4, 0));
    files.Write("longer than four\n");
    files.Write("again\n");
    EXPECT_EQ(Read(L"wrbdebug.000001.log"), "longer than four\n");
    EXPECT_EQ(Read(L"wrbdebug.log"), "again\n");
}

TEST_F(CLogFilesTest, OtherFilesAreNotItsOwn) {
    const std::set<std::string> others = {"wrbdebug.00001.log", "wrbdebug.00001x.log", "wrbdebug.000001.log.bak",
                                          "wrbdebug2.000001.log", "notes.txt"};
    for (const std::string& name : others) {
        WriteAll(folder / std::wstring(name.begin(), name.end()), "keep");
    }
    CLogFiles files(Options(1, 1));
    for (int i = 0; i < 5; ++i) {
        files.Write("line\n");
    }
    std::set<std::string> expected = others;
    expected.insert("wrbdebug.log");
    EXPECT_EQ(Names(), expected);
}

TEST_F(CLogFilesTest, WithoutLimitsOneFileGrows) {
    CLogFiles files(Options(0, 0));
    for (int i = 0; i < 100; ++i) {
        files.Write("line\n");
    }
    EXPECT_EQ(Read(L"wrbdebug.log").size(), 500u);
    EXPECT_EQ(Names().size(), 1u);
}

TEST_F(CLogFilesTest, AShortDiskLosesLinesUntilThereIsSpaceAgain) {
    const struct {
        tagDiskSpace space;
        LogWriteResult result;
    } kCases[] = {
        {{999, 0}, LogWriteResult::NoSpace},  // the size counts
        {{1000, 0}, LogWriteResult::Written},
        {{1000, 100'100}, LogWriteResult::NoSpace},  // the percentage counts
        {{1001, 100'100}, LogWriteResult::Written},
    };
    for (const auto& [left, result] : kCases) {
        space = left;
        CLogFiles files(Options(0, 0));
        EXPECT_EQ(files.Write("line\n"), result) << left.available << " of " << left.total;
    }
    space = {0, 0};
    CLogFiles files(Options(0, 0));
    EXPECT_EQ(files.Write("lost\n"), LogWriteResult::NoSpace);
    space = {5000, 0};
    EXPECT_EQ(files.Write("written\n"), LogWriteResult::Written);
    EXPECT_EQ(Read(L"wrbdebug.log").find("lost"), std::string::npos);
}

TEST_F(CLogFilesTest, AFolderThatCannotBeIsAFailureNotACrash) {
    WriteAll(folder / L"file", "");
    LogFileOptions options = Options(0, 0);
    options.folder += L"\\file\\below";
    CLogFiles files(options);
    EXPECT_EQ(files.Write("line\n"), LogWriteResult::Failed);
}

struct CLogSettingsTest : testing::Test {
    LogSettings Read(const std::string& body) {
        WriteAll(folder / L"debug.ini", "[Debug]\r\n" + body);
        LogSettings settings;
        EXPECT_TRUE(ReadLogSettings((folder / L"debug.ini").wstring(), settings));
        return settings;
    }
    CTempFolder folder;
};

TEST_F(CLogSettingsTest, KeysAreReadInTheirUnits) {
    const LogSettings settings = Read(
        "DebugFlags=1\r\nDebugLevel=W\r\nDebugLogFolder=D:\\Logs\r\nSplitSize=1000\r\nMaxLogCount=3\r\n"
        "ReserveHardDiskSpacePercentage=5\r\nReserveHardDiskSpaceSize=100\r\n");
    EXPECT_EQ(settings.files.folder, L"D:\\Logs");
    EXPECT_EQ(settings.files.splitBytes, 1000u);
    EXPECT_EQ(settings.files.maxFiles, 3u);
    EXPECT_EQ(settings.files.reservePercent, 5u);
    EXPECT_EQ(settings.files.reserveBytes, 102'400u);
    EXPECT_EQ(FilterWordOf(settings), ParseLogLevel(L"W"));
}

TEST_F(CLogSettingsTest, NonsenseAndGapsKeepTheDefaults) {
    for (const char* body : {"", "SplitSize=10 MB\r\nMaxLogCount=-1\r\nDebugLevel=loud\r\nDebugLogFolder=\r\n",
                             "SplitSize=99999999999\r\nMaxLogCount=x\r\nReserveHardDiskSpaceSize=\r\n"}) {
        const LogSettings settings = Read(body);
        EXPECT_TRUE(settings.enabled);
        EXPECT_EQ(settings.files.folder, L".\\Log\\");
        EXPECT_EQ(settings.files.splitBytes, 104'857'600u);
        EXPECT_EQ(settings.files.maxFiles, 10u);
        EXPECT_EQ(settings.files.reserveBytes, 20'971'520u);
        EXPECT_EQ(FilterWordOf(settings), 0u);
    }
}

TEST_F(CLogSettingsTest, SwitchedOffNothingIsWanted) {
    const LogSettings settings = Read("DebugFlags=0\r\nDebugLevel=D\r\n");
    EXPECT_FALSE(settings.enabled);
    EXPECT_FALSE(LogFilterAdmits(FilterWordOf(settings), 'F'));
    LogSettings untouched;
    EXPECT_FALSE(ReadLogSettings((folder / L"none.ini").wstring(), untouched));
    EXPECT_TRUE(ReadLogSettings(L"", untouched));
}

}  // namespace
}  // namespace wrb
