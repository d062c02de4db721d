// Firewall log files, record by record, with the services replaced by a list.
#include "cmdhl_CfwLogFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "CheckPFWLogVersion.h"
#include "Handle.h"
#include "INICache.h"
#include "PfwLogSample.h"
#include "TempFolder.h"

namespace {

using wrb::test::BytesOf;
using wrb::test::SampleRecord;
using V0 = SWRB_PFW_LOG_ITEM_V0;
using V1 = SWRB_PFW_LOG_ITEM;

// What each service got, as one text a record; the answer of each.
std::vector<std::wstring> g_agent;
std::vector<std::wstring> g_pool;
int g_agentResult = 1;
int g_poolResult = 1;

std::wstring TextOf(const tagFirewallLogEntry& entry) {
    std::wstring text = std::wstring(entry.uid) + L"|" + entry.date + L"|" + entry.time + L"|" + entry.localHost +
                        L"|" + entry.remoteHost;
    for (const uint16_t number :
         {entry.protocol, entry.type, entry.subType, entry.port, entry.direction, entry.logType}) {
        text += L"|" + std::to_wstring(number);
    }
    return text + L"|" + entry.processPath + L"|" + entry.processInfo;
}

int ToAgent(const tagFirewallLogEntry& entry) noexcept {
    g_agent.push_back(TextOf(entry));
    return g_agentResult;
}
int ToPool(const tagFirewallLogEntry& entry) noexcept {
    g_pool.push_back(TextOf(entry));
    return g_poolResult;
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
        g_agent.clear();
        g_pool.clear();
        g_agentResult = g_poolResult = 1;
        wrb::test::WriteAll(m_folder / L"server.ini", "[INI_SERVER_SECTION]\r\n");
        ServerIniCache().init((m_folder / L"server.ini").c_str(), 3600);
        TakeCapturedLog();
    }

    int32_t Forward(const std::string& bytes) {
        wrb::test::WriteAll(m_folder / L"fw.log", bytes);
        return wrb::ForwardCfwLogFile(L"uid", (m_folder / L"fw.log").c_str(), {ToAgent, ToPool});
    }

    static bool HasLogged(uint32_t level, const std::wstring& text) {
        const auto lines = TakeCapturedLog();
        return std::ranges::find(lines, tagCapturedLine{level, text}) != lines.end();
    }

    wrb::test::CTempFolder m_folder;
};

TEST_F(CfwLogFile, BothVersionsCarryTheSame) {
    EXPECT_EQ(Forward(BytesOf(SampleRecord<V0>()) + BytesOf(SampleRecord<V0>())), 1);
    EXPECT_EQ(Forward(BytesOf(SampleRecord<V1>())), 1);
    const std::wstring head = L"uid|" + LocalTime(1'700'000'000) + L"|192.168.0.10|";
    const std::wstring tail = L"|6|65535|9|443|1|0|C:\\Program Files\\a.exe|Gr\u00FC\u00DFe";
    const std::vector<std::wstring> expected = {head + L"255.1.20.0" + tail, head + L"255.1.20.0" + tail,
                                                head + L"fe80::1" + tail};
    EXPECT_EQ(g_agent, expected);
    EXPECT_EQ(g_pool, expected);
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
    ASSERT_EQ(g_pool.size(), std::size(times));
    for (std::size_t i = 0; i < g_pool.size(); ++i) {
        EXPECT_EQ(g_pool[i].substr(4, 15), LocalTime(times[i]));
    }
}

TEST_F(CfwLogFile, SomePathsAreHidden) {
    const struct {
        const char* path;
        uint8_t direction;
        int showAll;
        bool isShown;
    } cases[] = {{"Idle", 1, 1, false}, {"idle", 1, 0, true}, {"Idle2", 1, 0, true}, {"x", 2, 0, false},
                 {"x", 2, 1, true},     {"x", 3, 0, true},    {"Idle", 2, 1, false}};
    for (const auto& row : cases) {
        ServerIniCache().writeINIInt(L"INI_SERVER_SECTION", L"CFWShowAllPV", row.showAll);
        V0 item = SampleRecord<V0>();
        std::strcpy(item.szPVName, row.path);
        item.byDirection = row.direction;
        Forward(BytesOf(item));
        const std::wstring shown = row.isShown ? std::wstring(row.path, row.path + std::strlen(row.path)) : L"";
        EXPECT_TRUE(g_agent.back().ends_with(L"|0|" + shown + L"|Gr\u00FC\u00DFe")) << row.path << +row.direction;
    }
}

TEST_F(CfwLogFile, TextsWithoutAnEndLoseTheirLastCharacter) {
    V1 item = SampleRecord<V1>();
    std::fill(std::begin(item.szPVName), std::end(item.szPVName), 'p');
    std::fill(std::begin(item.szLocalHost), std::end(item.szLocalHost), '1');
    std::fill(std::begin(item.szRemoteHost), std::end(item.szRemoteHost), '\xE4');
    std::fill(std::begin(item.wszPVInfo), std::end(item.wszPVInfo), L'\xFFFF');
    EXPECT_EQ(Forward(BytesOf(item)), 1);
    EXPECT_TRUE(g_pool[0].ends_with(std::wstring(259, L'p') + L"|" + std::wstring(127, L'\xFFFF')));
    EXPECT_NE(g_pool[0].find(L"|" + std::wstring(64, L'1') + L"|"), std::wstring::npos);
}

// Version 1, cut everywhere: a record counts once its rear marker is there, and never borrows that of the one before.
TEST_F(CfwLogFile, ACutRecordIsNotMadeUp) {
    const std::string whole = BytesOf(SampleRecord<V1>()) + BytesOf(SampleRecord<V1>());
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        if (length % sizeof(V0) == 0) {
            continue;  // another version by its size
        }
        g_pool.clear();
        const std::size_t rest = length % sizeof(V1);
        const bool isComplete = rest > offsetof(V1, byRear);
        EXPECT_EQ(Forward(whole.substr(0, length)), rest == 0 || isComplete ? 1 : -2) << length;
        EXPECT_EQ(g_pool.size(), length / sizeof(V1) + (isComplete ? 1 : 0)) << length;
    }
}

template <typename Item>
std::string AllMarkers(uint8_t Item::*marker) {
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        Item item = SampleRecord<Item>();
        item.*marker = static_cast<uint8_t>(value);
        bytes += BytesOf(item);
    }
    return bytes;
}

TEST_F(CfwLogFile, OnlyTheRightMarkersPass) {
    for (const std::string& bytes :
         {AllMarkers(&V0::byHead), AllMarkers(&V0::byRear), AllMarkers(&V1::byHead), AllMarkers(&V1::byRear)}) {
        g_pool.clear();
        EXPECT_EQ(Forward(bytes), -2);
        EXPECT_EQ(g_pool.size(), 1u);
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
                 {BytesOf(SampleRecord<V0>()), 800, L"0", 1, 1},
                 {BytesOf(SampleRecord<V1>()), 932, L"1", 1, 1},
                 {BytesOf(SampleRecord<V0>()), 932, L"1", 0, -2},  // no look at the markers
                 {BytesOf(SampleRecord<V1>()), 1600, L"0", 0, -2},
                 {BytesOf(SampleRecord<V0>()), 799, L"1", 0, -2},
                 {BytesOf(SampleRecord<V0>()), kBoth, L"0", 1, -2},
                 {BytesOf(SampleRecord<V1>()), kBoth, L"1", 1, -2},
                 {both, kBoth, L"0", 1, -2},
                 {"", kBoth, L"-1", 0, 1}};
    for (const auto& row : cases) {
        g_pool.clear();
        std::string bytes = row.start;
        bytes.resize(row.size, '\0');
        EXPECT_EQ(Forward(bytes), row.result) << row.size << row.version;
        EXPECT_EQ(g_pool.size(), row.forwarded) << row.size << row.version;
        EXPECT_TRUE(HasLogged('D', std::wstring(L"processCFWLogFile:final log version(") + row.version + L")"));
    }
    Forward(std::string(kBoth, '\0'));
    EXPECT_TRUE(HasLogged('E',
                          L"processCFWLogFile: processCFWLogFile ERROR:GetFileSize(186400), "
                          L"sizeof(SWRB_PFW_LOG_ITEM_V0)=(800), (sizeof(SWRB_PFW_LOG_ITEM)=(932)"));
}

TEST_F(CfwLogFile, AServiceThatTakesNothingStopsNothing) {
    const std::string two = BytesOf(SampleRecord<V1>()) + BytesOf(SampleRecord<V1>());
    g_agentResult = 0;
    EXPECT_EQ(Forward(two), 1);
    EXPECT_TRUE(HasLogged(8, L"qmaSendFirewallLog: send agent log failed(uid)"));
    g_poolResult = 0;
    EXPECT_EQ(Forward(two), -2);
    EXPECT_TRUE(HasLogged(8, L"processCFWLogFile:uid=uid fail"));
    EXPECT_EQ(g_agent.size(), 4u);
    EXPECT_EQ(g_pool.size(), 4u);
}

TEST_F(CfwLogFile, AMissingFileIsOnlyLogged) {
    const std::wstring name = (m_folder / L"none").wstring();
    EXPECT_EQ(processCFWLogFile(L"uid", name.c_str()), 1);
    EXPECT_EQ(TakeCapturedLog(),
              (std::vector<tagCapturedLine>{{8, L"processCFWLogFile: FileName=" + name},
                                            {5, L"processCFWLogFile:Fail open file err=2, '" + name + L"'"}}));
}

TEST_F(CfwLogFile, TheVersionCheckGoesBackToTheStart) {
    for (const auto& [bytes, version] : {std::pair{BytesOf(SampleRecord<V0>()), 0},
                                         std::pair{BytesOf(SampleRecord<V1>()), 1}, std::pair{std::string("x"), -1}}) {
        wrb::test::WriteAll(m_folder / L"fw.log", bytes);
        const wrb::CFileHandle file(CreateFileW((m_folder / L"fw.log").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_EQ(CheckPFWLogVersion(file.Get()), version);
        EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_CURRENT), 0u);
    }
    TakeCapturedLog();
    EXPECT_EQ(CheckPFWLogVersion(INVALID_HANDLE_VALUE), -1);
    EXPECT_EQ(TakeCapturedLog(), (std::vector<tagCapturedLine>{{8, L"CheckPFWLogVersion: bRetVer=(-1)"}}));
}

}  // namespace
