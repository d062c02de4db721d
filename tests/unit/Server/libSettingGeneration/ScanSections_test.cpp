// The twelve sections, by the export functions and by the containers.
#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "ExpectedScanSections.h"
#include "ExportScanCfg.h"
#include "IPCMsgBufferException.h"
#include "Serializer.h"
#include "SettingContainer.h"

namespace {

using wrb::test::DistinctScanValues;
using wrb::test::ExpectedScanSections;

constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";

using Export = void (*)(std::wstring&, std::wstring_view, const wrb::ScanGroupValues&);

// In the order of ExpectedScanSections.
constexpr Export kExports[] = {
    cmdhm_ExportMSCfg,    cmdhm_ExportRTCfg,    cmdhm_ExportPSCfg,    cmdhm_ExportSNCfg,
    cmdhm_ExportMSCfgEx,  cmdhm_ExportRTCfgEx,  cmdhm_ExportPSCfgEx,  cmdhm_ExportSNCfgEx,
    cmdhm_ExportSpyMSCfg, cmdhm_ExportSpyRTCfg, cmdhm_ExportSpyPSCfg, cmdhm_ExportSpySNCfg,
};

TEST(ScanSections, EveryBitOfEveryGroupShowsWhereItBelongs) {
    std::vector<uint32_t> words{0, 0xFFFFFFFF, 3u << 17, 3u << 2, 3u << 16, 3u << 8};
    for (uint32_t bit = 1; bit != 0; bit <<= 1) {
        words.push_back(bit);
    }
    for (std::size_t i = 0; i < std::size(kExports); ++i) {
        for (const uint32_t flags : words) {
            const wrb::ScanGroupValues values = DistinctScanValues(flags);
            std::wstring out = L"before\n";
            kExports[i](out, kUid, values);
            ASSERT_EQ(out, L"before\n" + ExpectedScanSections()[i].Text(kUid, values)) << i << std::hex << flags;
        }
    }
}

// Spelled out, so that the expectations above are themselves held against a text; it is also the only group whose
// export leaves a line in the log.
TEST(ScanSections, ManualSpywareSpelledOutAndLogged) {
    TakeCapturedLog();
    for (const Export function : kExports) {
        std::wstring out;
        wrb::ScanGroupValues values;
        values.flags = 0x01010001;
        values.excludeFileExtList = L"MP3;AVI";
        function(out, L"u", values);
    }
    EXPECT_EQ(TakeCapturedLog(),
              std::vector<CapturedLine>(
                  {{8,
                    L"[cmdhm_ExportSpyMSCfg][[Spyware Manual Scan Configuration]\nUID=u\nEnable=1\nAllowCfg=0\n"
                    L"ScanType=2\nActionType=1\nEnableSpyExclusion=1\nExcludeFileExtList=MP3;AVI\n]"}}));
}

TEST(ScanSections, OnlyTheRealTimeSectionTakesTheExploitActionOut) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"", L"CustAction=\n"},
        {L"CVE_Exploit-5-4;Universe-5-4", L"CustAction=Universe-5-4\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"A-1-2;CVE_Exploit-5-4;B-1-2", L"CustAction=A-1-2;B-1-2\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"A-1-2;CVE_Exploit-5-4", L"CustAction=A-1-2;\nCustActionCve=CVE_Exploit-5-4\n"},
        {L"CVE_Exploit-1-2;CVE_Exploit-3-4;", L"CustAction=CVE_Exploit-3-4;\nCustActionCve=CVE_Exploit-1-2\n"},
    };
    for (const auto& [text, lines] : rows) {
        wrb::ScanGroupValues values;
        values.custAction = text;
        std::wstring out;
        cmdhm_ExportRTCfg(out, L"", values);
        const std::size_t from = out.find(L"CustAction=");
        EXPECT_EQ(out.substr(from, out.find(L"ScanNetwork=") - from), lines);
        cmdhm_ExportMSCfg(out, L"", values);
        EXPECT_NE(out.find(L"\nCustAction=" + values.custAction + L"\nEnableUniAct="), out.npos);
    }
}

TEST(SettingContainer, BytesAreTheFieldsInDeclaredOrderAndEveryCutIsRefused) {
    CSettingContainerMSCfgEx sent;
    sent.m_uid = L"u";
    sent.m_values.flags = 0x00010002;
    sent.m_values.excludedFolder = L"f";
    sent.m_values.excludedExt = L"x";
    CSerializer message;
    message << sent;
    const std::string_view expected(
        "\4\0\0\0u\0\0\0\4\0\0\0\2\0\1\0\4\0\0\0f\0\0\0"
        "\2\0\0\0\0\0\4\0\0\0x\0\0\0",
        38);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(message.Data()), message.GetSize()), expected);
    CSettingContainerMSCfgEx received;
    for (uint32_t length = 0; length < message.GetSize(); ++length) {
        CSerializer cut;
        cut.Load(message.Data(), length);
        EXPECT_THROW(cut >> received, CIPCMsgBufferException) << length;
    }
    message >> received;
    std::wstring out;
    received.ExportToIni(out);
    EXPECT_EQ(out, ExpectedScanSections()[4].Text(L"u", sent.m_values));
}

}  // namespace
