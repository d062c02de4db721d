// Firewall log files, record by record, with the services replaced by a list.
#include "cmdhl_CfwLogFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "CapturedLog.h"
#include "CheckPFWLogVersion.h"
#include "Handle.h"
#include "INICache.h"
#include "PfwLogSample.h"
#include "TempFolder.h"
#include "Text.h"

namespace {

using wrb::test::BytesOf;
using wrb::test::SampleRecord;
using V0 = SWRB_PFW_LOG_ITEM_V0;
using V1 = SWRB_PFW_LOG_ITEM;

// What each service got, as one text a record; the answer of each.
enum { kAgent, kPool };
std::vector<std::wstring> g_sent[2];
int g_results[2];
DWORD g_error;

template <int service>
int Take(const wrb::FirewallLogEntry& entry) noexcept {
    g_sent[service].push_back(wrb::FormatWide(L"%s|%s|%s|%s|%s|%d|%d|%d|%d|%d|%d|%s|%s", entry.uid, entry.date,
                                              entry.time, entry.localHost, entry.remoteHost, entry.protocol, entry.type,
                                              entry.subType, entry.port, entry.direction, entry.logType,
                                              entry.processPath, entry.processInfo));
    SetLastError(g_error);
    return g_results[service];
}

std::wstring LocalTime(uint32_t seconds) {
    const std::time_t time = seconds;
    std::tm local{};
    localtime_s(&local, &time);
    wchar_t text[32];
    std::wcsftime(text, std::size(text), L"%Y%m%d|%H%M%S", &local);
    return text;
}

class CfwLogFile : public testing::Test {
  protected:
    void SetUp() override {
        std::fill_n(g_sent, 2, std::vector<std::wstring>());
        std::fill_n(g_results, 2, 1);
        g_error = 0;
        wrb::test::WriteAll(m_folder / L"server.ini", "[INI_SERVER_SECTION]\r\n");
        ServerIniCache().init((m_folder / L"server.ini").c_str(), 3600);
        TakeCapturedLog();
    }

    int32_t Forward(const std::string& bytes) {
        wrb::test::WriteAll(m_folder / L"fw.log", bytes);
        return ForwardFile(m_folder / L"fw.log");
    }

    int32_t ForwardFile(const std::filesystem::path& path, uint32_t milliseconds = 600'000) {
        wrb::CfwUpload upload(L"uid", {Take<kAgent>, Take<kPool>}, milliseconds);
        const int32_t result = processCFWLogFile(L"uid", path.c_str(), upload);
        m_lost.rows += upload.lost.rows;
        m_lost.events += upload.lost.events;
        return result;
    }

    static bool HasLogged(uint32_t level, const std::wstring& text) {
        return std::ranges::count(TakeCapturedLog(), CapturedLine{level, text}) > 0;
    }

    wrb::test::TempFolder m_folder;
    wrb::Undelivered m_lost;
};

TEST_F(CfwLogFile, BothVersionsCarryTheSame) {
    EXPECT_EQ(Forward(BytesOf(SampleRecord<V0>()) + BytesOf(SampleRecord<V0>())), 1);
    EXPECT_EQ(Forward(BytesOf(SampleRecord<V1>())), 1);
    const std::wstring head = L"uid|" + LocalTime(1'700'000'000) + L"|192.168.0.10|";
    const std::wstring tail = L"|6|65535|9|443|1|0|C:\\Program Files\\a.exe|Gr\u00FC\u00DFe";
    const std::vector<std::wstring> expected = {head + L"255.1.20.0" + tail, head + L"255.1.20.0" + tail,
                                                head + L"fe80::1" + tail};
    EXPECT_EQ(g_sent[kAgent], expected);
    EXPECT_EQ(g_sent[kPool], expected);
}

TEST_F(CfwLogFile, TimesAreUnsignedAndLocal) {
    std::string bytes;
    const uint32_t times[] = {0, 59, 60, 1'700'000'039, 1'700'000'040, 1'700'000'001, 0x80000000, 0xFFFFFFFF};
    for (const uint32_t time : times) {
        V1 item = SampleRecord<V1>();
        item.dwTime = time;
        bytes += BytesOf(item);
    }
    Forward(bytes);
    for (std::size_t i = 0; i < std::size(times); ++i) {
        EXPECT_EQ(g_sent[kPool].at(i).substr(4, 15), LocalTime(times[i]));
    }
}

TEST_F(CfwLogFile, SomePathsAreHidden) {
    const struct {
        const char* path;
        uint8_t direction;
        int showAll;
        const wchar_t* shown;
    } cases[] = {{"Idle", 1, 1, L""}, {"idle", 1, 0, L"idle"}, {"Idle2", 1, 0, L"Idle2"}, {"x", 2, 0, L""},
                 {"x", 2, 1, L"x"},   {"x", 3, 0, L"x"},       {"Idle", 2, 1, L""}};
    for (const auto& row : cases) {
        ServerIniCache().writeINIInt(L"INI_SERVER_SECTION", L"CFWShowAllPV", row.showAll);
        V0 item = SampleRecord<V0>();
        std::snprintf(item.szPVName, sizeof item.szPVName, "%s", row.path);
        item.byDirection = row.direction;
        Forward(BytesOf(item));
        EXPECT_TRUE(g_sent[kAgent].back().ends_with(std::wstring(L"|0|") + row.shown + L"|Gr\u00FC\u00DFe"))
            << row.path << +row.direction;
    }
}

TEST_F(CfwLogFile, TextsWithoutAnEndLoseTheirLastCharacter) {
    V1 item = SampleRecord<V1>();
    std::fill(std::begin(item.szPVName), std::end(item.szPVName), 'p');
    std::fill(std::begin(item.szLocalHost), std::end(item.szLocalHost), '1');
    std::fill(std::begin(item.szRemoteHost), std::end(item.szRemoteHost), '\xE4');
    std::fill(std::begin(item.wszPVInfo), std::end(item.wszPVInfo), L'\xFFFF');
    EXPECT_EQ(Forward(BytesOf(item)), 1);
    EXPECT_TRUE(g_sent[kPool][0].ends_with(std::wstring(259, L'p') + L"|" + std::wstring(127, L'\xFFFF')));
    EXPECT_NE(g_sent[kPool][0].find(L"|" + std::wstring(64, L'1') + L"|"), std::wstring::npos);
}

// Version 1, cut everywhere: a record counts once its rear marker is there, and never borrows that of the one before.
TEST_F(CfwLogFile, ACutRecordIsNotMadeUp) {
    const std::string whole = BytesOf(SampleRecord<V1>()) + BytesOf(SampleRecord<V1>());
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        if (length % sizeof(V0) == 0) {
            continue;  // another version by its size
        }
        g_sent[kPool].clear();
        const std::size_t rest = length % sizeof(V1);
        const bool isComplete = rest > offsetof(V1, byRear);
        EXPECT_EQ(Forward(whole.substr(0, length)), rest == 0 || isComplete ? 1 : -2) << length;
        EXPECT_EQ(g_sent[kPool].size(), length / sizeof(V1) + (isComplete ? 1 : 0)) << length;
    }
}

TEST_F(CfwLogFile, OnlyTheRightMarkersPass) {
    const std::string v0 = BytesOf(SampleRecord<V0>());
    const std::string v1 = BytesOf(SampleRecord<V1>());
    for (const auto& [record, marker] : {std::pair(v0, offsetof(V0, byHead)), std::pair(v0, offsetof(V0, byRear)),
                                         std::pair(v1, offsetof(V1, byHead)), std::pair(v1, offsetof(V1, byRear))}) {
        std::string bytes;
        for (int value = 0; value < 256; ++value) {
            bytes += record;
            bytes[bytes.size() - record.size() + marker] = static_cast<char>(value);
        }
        g_sent[kPool].clear();
        EXPECT_EQ(Forward(bytes), -2);
        EXPECT_EQ(g_sent[kPool].size(), 1u);
        EXPECT_EQ(m_lost.rows + m_lost.events, 0u) << "no record";
        EXPECT_TRUE(
            HasLogged('E', L"processCFWLogFile - Server\\MasterService\\CmdHndlr\\libCmdHndlrClient\\cmdhl_Others"));
    }
}

TEST_F(CfwLogFile, TheSizeTellsTheVersionAndWhereItCannotTheMarkersDo) {
    constexpr std::size_t kBoth = 186'400;
    std::string both = BytesOf(SampleRecord<V1>());
    both[offsetof(V0, byRear)] = '\xFE';
    const struct {
        std::string start;
        std::size_t size;
        const wchar_t* version;
        std::size_t forwarded;
        int32_t result;
    } cases[] = {{"", 0, L"0", 0, 1},
                 {BytesOf(SampleRecord<V0>()), 932, L"1", 0, -2},  // no look at the markers
                 {BytesOf(SampleRecord<V1>()), 1600, L"0", 0, -2},
                 {BytesOf(SampleRecord<V0>()), 799, L"1", 0, -2},
                 {BytesOf(SampleRecord<V0>()), kBoth, L"0", 1, -2},
                 {BytesOf(SampleRecord<V1>()), kBoth, L"1", 1, -2},
                 {both, kBoth, L"0", 1, -2},
                 {"", kBoth, L"-1", 0, 1}};
    for (const auto& row : cases) {
        g_sent[kPool].clear();
        std::string bytes = row.start;
        bytes.resize(row.size, '\0');
        EXPECT_EQ(Forward(bytes), row.result) << row.size << row.version;
        EXPECT_EQ(g_sent[kPool].size(), row.forwarded) << row.size << row.version;
        EXPECT_TRUE(HasLogged('D', std::wstring(L"processCFWLogFile:final log version(") + row.version + L")"));
    }
    Forward(std::string(kBoth, '\0'));
    EXPECT_TRUE(HasLogged('E',
                          L"processCFWLogFile: processCFWLogFile ERROR:GetFileSize(186400), "
                          L"sizeof(SWRB_PFW_LOG_ITEM_V0)=(800), (sizeof(SWRB_PFW_LOG_ITEM)=(932)"));
}

TEST_F(CfwLogFile, AServiceThatTakesNothingStopsNothing) {
    const std::string two = BytesOf(SampleRecord<V1>()) + BytesOf(SampleRecord<V1>());
    g_results[kAgent] = 0;
    EXPECT_EQ(Forward(two), 1);
    EXPECT_TRUE(HasLogged(8, L"qmaSendFirewallLog: send agent log failed(uid)"));
    g_results[kPool] = 0;
    EXPECT_EQ(Forward(two), -2);
    EXPECT_TRUE(HasLogged(8, L"processCFWLogFile:uid=uid fail"));
    EXPECT_EQ(g_sent[kAgent].size(), 4u);
    EXPECT_EQ(g_sent[kPool].size(), 4u);
    EXPECT_EQ(m_lost.rows, 2u);
    EXPECT_EQ(m_lost.events, 4u);
}

// A service that does not take a record in time gets no other one. When the time is up, none is sent.
TEST_F(CfwLogFile, AHungServiceIsAskedOnceAnUpload) {
    std::fill_n(g_results, 2, 0);
    g_error = ERROR_SEM_TIMEOUT;
    EXPECT_EQ(Forward(BytesOf(SampleRecord<V1>()) + BytesOf(SampleRecord<V1>())), -2);
    EXPECT_EQ(g_sent[kAgent].size() + g_sent[kPool].size(), 2u);
    EXPECT_EQ(ForwardFile(m_folder / L"fw.log", 0), -2);
    EXPECT_EQ(g_sent[kAgent].size() + g_sent[kPool].size(), 2u);
    EXPECT_EQ(m_lost.rows, 4u);
    EXPECT_EQ(m_lost.events, 4u);
}

// Held open, or gone: the agent has its "1", and what the size tells is lost.
TEST_F(CfwLogFile, AFileThatCannotBeOpenedIsLost) {
    const std::wstring path = (m_folder / L"fw.log").wstring();
    const auto forward = [&] {
        m_lost = {};
        EXPECT_EQ(ForwardFile(path), 1);
        EXPECT_EQ(m_lost.rows, m_lost.events);
        return m_lost.rows;
    };
    EXPECT_EQ(forward(), 1u);
    for (const auto& [bytes, records] : {std::pair(0u, 0u), {932u, 1u}, {933u, 2u}, {1'600u, 2u}}) {
        wrb::test::WriteAll(path, std::string(bytes, '\0'));
        const wrb::FileHandle held(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(forward(), records) << bytes;
    }
}

TEST_F(CfwLogFile, AMissingFileIsOnlyLogged) {
    const std::wstring name = (m_folder / L"none").wstring();
    EXPECT_EQ(ForwardFile(name), 1);
    EXPECT_EQ(CheckPFWLogVersion(INVALID_HANDLE_VALUE), -1);
    EXPECT_EQ(TakeCapturedLog(),
              (std::vector<CapturedLine>{{8, L"processCFWLogFile: FileName=" + name},
                                         {5, L"processCFWLogFile:Fail open file err=2, '" + name + L"'"},
                                         {8, L"CheckPFWLogVersion: bRetVer=(-1)"}}));
}

}  // namespace
