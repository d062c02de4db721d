#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "CapturedLog.h"
#include "ExpectedScanSections.h"
#include "ExportScanCfg.h"
#include "RenderScanGroup.h"

namespace {

std::size_t g_allocations = 0;

}  // namespace

// Counts what the program allocates.
void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using wrb::ScanGroup;
using wrb::test::DistinctScanValues;
using wrb::test::ExpectedScanSections;
using wrb::test::tagExpectedSection;

constexpr std::wstring_view kUid = L"12345678-1234-1234-1234-123456789abc";

using Export = void (*)(std::wstring&, std::wstring_view, const tagScanGroupValues&);

// In the order of ExpectedScanSections.
constexpr Export kExports[] = {
    cmdhm_ExportMSCfg,    cmdhm_ExportRTCfg,    cmdhm_ExportPSCfg,    cmdhm_ExportSNCfg,
    cmdhm_ExportMSCfgEx,  cmdhm_ExportRTCfgEx,  cmdhm_ExportPSCfgEx,  cmdhm_ExportSNCfgEx,
    cmdhm_ExportSpyMSCfg, cmdhm_ExportSpyRTCfg, cmdhm_ExportSpyPSCfg, cmdhm_ExportSpySNCfg,
};

TEST(ScanSections, EveryBitOfEveryGroupShowsWhereItBelongs) {
    std::vector<uint32_t> words{0, 0xFFFFFFFF, 3u << 17, 3u << 2, 3u << 16, 3u << 8};
    for (unsigned bit = 0; bit < 32; ++bit) {
        words.push_back(1u << bit);
        words.push_back(~(1u << bit));
    }
    ASSERT_EQ(ExpectedScanSections().size(), std::size(kExports));
    for (std::size_t i = 0; i < std::size(kExports); ++i) {
        const tagExpectedSection& section = ExpectedScanSections()[i];
        SCOPED_TRACE(testing::Message() << "section " << i);
        for (const uint32_t flags : words) {
            const tagScanGroupValues values = DistinctScanValues(flags);
            std::wstring out = L"before\n";
            kExports[i](out, kUid, values);
            ASSERT_EQ(out, L"before\n" + section.Text(kUid, values)) << std::hex << flags;
        }
    }
}

// One section spelled out, so that the expectations above are themselves held against a text.
TEST(ScanSections, SpywareRealTimeSpelledOut) {
    tagScanGroupValues values;
    values.flags = 0x40009;
    std::wstring out;
    cmdhm_ExportSpyRTCfg(out, L"u", values);
    EXPECT_EQ(out,
              L"[Spyware Real Time Scan Configuration]\nUID=u\nEnable=1\nAllowCfg=0\nActionType=0\n"
              L"PopSpywareFoundAlert=1\n");
}

TEST(ScanSections, GroupsCarryTheirDatabaseCommandAndChangedBit) {
    const struct {
        const wchar_t* name;
        uint32_t configFlag;
        const wchar_t* command;
    } expected[] = {
        {L"MSCfg", 0x1, L"DB_GET_MSCF"},
        {L"SpyMSCfg", 0x1, L"DB_GET_SPYWARE_MSCF"},
        {L"MSCfgEx", 0x100, L"DB_GET_MSCF"},
        {L"RTCfg", 0x2, L"DB_GET_RTCF"},
        {L"SpyRTCfg", 0x2, L"DB_GET_SPYWARE_RTCF"},
        {L"RTCfgEx", 0x4000, L"DB_GET_RTCF"},
        {L"PSCfg", 0x4, L"DB_GET_PSCF"},
        {L"SpyPSCfg", 0x4, L"DB_GET_SPYWARE_PSCF"},
        {L"PSCfgEx", 0x8000, L"DB_GET_PSCF"},
        {L"SNCfg", 0x400, L"DB_GET_SNCF"},
        {L"SpySNCfg", 0x400, L"DB_GET_SPYWARE_SNCF"},
        {L"SNCfgEx", 0x10000, L"DB_GET_SNCF"},
    };
    ASSERT_EQ(std::size(expected), wrb::kScanGroups.size());
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const ScanGroup& group = wrb::kScanGroups[i];
        EXPECT_EQ(group.name, expected[i].name);
        EXPECT_EQ(group.configFlag, expected[i].configFlag) << i;
        EXPECT_EQ(group.numbersCommand, expected[i].command);
    }
}

TEST(ScanSections, OnlyTheRealTimeSectionTakesTheExploitActionOut) {
    const struct {
        const wchar_t* text;
        const wchar_t* lines;
    } rows[] = {
        {L"", L"CustAction=\n"},
        {L"Joke-1-2;Universe-5-4", L"CustAction=Joke-1-2;Universe-5-4\n"},
        {L"CVE_Exploi-5-4", L"CustAction=CVE_Exploi-5-4\n"},
        {L"CVE_Exploit-5-4;Universe-5-4", L"CustAction=Universe-5-4\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"A-1-2;CVE_Exploit-5-4;B-1-2", L"CustAction=A-1-2;B-1-2\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"A-1-2;CVE_Exploit-5-4", L"CustAction=A-1-2;\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"A-1-2;CVE_Exploit-5-4;", L"CustAction=A-1-2;\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"A-1-2;CVE_Exploit-5", L"CustAction=A-1-2;\nCustActionCve=CVE_Exploit-5\n"},
        {L"A-1-2;CVE_Exploit", L"CustAction=A-1-2;\nCustActionCve=CVE_Exploit\n"},
        {L"CVE_Exploit-1-2;CVE_Exploit-3-4;", L"CustAction=CVE_Exploit-3-4;\nCustActionCve=CVE_Exploit-1-2\n"},
    };
    for (const auto& row : rows) {
        tagScanGroupValues values;
        values.custAction = row.text;
        std::wstring out;
        cmdhm_ExportRTCfg(out, L"", values);
        const std::size_t from = out.find(L"CustAction=");
        EXPECT_EQ(out.substr(from, out.find(L"ScanNetwork=") - from), row.lines);
        for (const Export other : {cmdhm_ExportMSCfg, cmdhm_ExportPSCfg, cmdhm_ExportSNCfg}) {
            std::wstring whole;
            other(whole, L"", values);
            EXPECT_NE(whole.find(L"\nCustAction=" + values.custAction + L"\n"), whole.npos);
            EXPECT_EQ(whole.find(L"CustActionCve="), whole.npos);
        }
    }
}

TEST(ScanSections, RenderingIntoReservedRoomAllocatesNothing) {
    const tagScanGroupValues values = DistinctScanValues(0xA5A5A5A5);
    std::wstring out;
    out.reserve(20480);
    const std::size_t before = g_allocations;
    for (const ScanGroup& group : wrb::kScanGroups) {
        wrb::RenderScanGroup(out, group, kUid, values);
    }
    EXPECT_EQ(g_allocations, before);
    EXPECT_GT(out.size(), 4000u);
}

TEST(ScanSections, OnlyTheManualSpywareExportLogs) {
    TakeCapturedLog();
    for (const Export function : kExports) {
        std::wstring out;
        function(out, L"u", DistinctScanValues(0));
    }
    const auto lines = TakeCapturedLog();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, 8u);
    EXPECT_EQ(lines[0].text,
              L"[cmdhm_ExportSpyMSCfg][[Spyware Manual Scan Configuration]\nUID=u\nEnable=0\nAllowCfg=0\nScanType=2\n"
              L"ActionType=2\nEnableSpyExclusion=0\nExcludeFileExtList=MP3;AVI\n]");
}

}  // namespace
