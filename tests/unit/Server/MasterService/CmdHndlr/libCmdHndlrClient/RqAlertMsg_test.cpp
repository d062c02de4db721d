// The texts of alerts: which file a type has, how its text is encoded, and the section with all of them.
#include <gmock/gmock.h>

#include "Ask.h"
#include "CapturedLog.h"
#include "CounterSection.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "ServerHome.h"
#include "SystemText.h"

namespace {

using testing::ElementsAre;
using wrb::test::WideBytes;

// The mark alone. It is a whole number of base64 groups, so that what follows is the message's own encoding.
constexpr wchar_t kMark[] = L"IAAhAEIAQQBTAEUANgA0AEUARAAhACAA";

// In the order in which a section reads them.
constexpr struct tagFile {
    const wchar_t* name;
    const wchar_t* type;
    uint32_t slot;  // 0: not counted
} kFiles[] = {{L"ALERT.MSG", L"0", 120},       {L"ALERTCFW.MSG", L"1", 121}, {L"AlertAS.MSG", L"3", 122},
              {L"AlertWSR.MSG", L"5", 123},    {L"AlertCCCA.MSG", L"13", 0}, {L"AlertDAC.MSG", L"7", 124},
              {L"AlertBM.MSG", L"8", 125},     {L"AlertQKA.MSG", L"14", 0},  {L"AlertDLP.MSG", L"12", 0},
              {L"ALERTH.MSG", L"9", 0},        {L"ALERTM.MSG", L"10", 0},    {L"ALERTL.MSG", L"11", 0},
              {L"AlertSABLEX.MSG", L"15", 126}};

class RqAlertMsg : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override { cmdhl_Finalize(); }

    static std::wstring AskFor(const std::wstring& type, const std::wstring& uid = L"uid-1") {
        return Ask(L"CMDHL_CMDHL_GET_CLN_ALERT_MSG", uid + L"\t" + type);
    }

    wrb::test::ServerHome m_home;
};

// Each text has three characters more than the one before, which are eight of base64.
TEST_F(RqAlertMsg, EveryTypeHasItsFileAndEightHaveCounters) {
    wrb::CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), wrb::CounterAttach::Attached) << error;
    std::wstring text;
    for (const tagFile& file : kFiles) {
        m_home.Write(std::wstring(L"admin\\") + file.name, WideBytes(text += L"abc"));
    }
    std::size_t length = 2 + 32;
    for (const tagFile& file : kFiles) {
        EXPECT_EQ(AskFor(file.type).size(), length += 8) << file.name;
        EXPECT_TRUE(file.slot == 0 || counters.Slot(file.slot).calls == 1) << file.slot;
    }
    for (const wchar_t* const other : {L"2", L"4", L"6", L"16", L"-1", L"127", L"129"}) {
        EXPECT_EQ(AskFor(other), std::wstring(L"1\t") + kMark + L"YQBiAGMA") << other;
    }
    AskFor(L"128");
    EXPECT_EQ(counters.Slot(127).calls, 1u);
    EXPECT_EQ(counters.Slot(47).calls, 8u) << "all that are counted";
}

TEST_F(RqAlertMsg, SectionHasAllTextsInItsOwnOrder) {
    const auto section = [](const std::wstring& settings) {
        std::wstring text = L"1\t[Alert Message]\n";
        for (const std::wstring name : {L"AV", L"AS", L"Firewall", L"WRS", L"CCCA", L"DAC", L"BM", L"Quokka", L"AV_H",
                                        L"AV_M", L"AV_L", L"DLP", L"", L"Sablx"}) {
            const bool isLow = name == L"AV_L";
            text += name.empty() ? settings
                                 : L"Alert" + name + L" = " + kMark + (isLow ? L"SABpAAoA" : L"") + L"\nLen" + name +
                                       (name == L"Firewall" ? L"f" : L"") + (isLow ? L" = 40\n" : L" = 32\n");
        }
        return text;
    };
    m_home.Write(L"admin\\ALERTL.MSG", WideBytes(L"Hi\r\n"));
    TakeCapturedTexts();
    EXPECT_EQ(AskFor(L"128"), section(L"UseVirusAlertSeverity = 0\nHighRiskVirusType = Worm,Trojan\n"));
    const auto* file = std::begin(kFiles);
    for (const std::wstring& line : TakeCapturedTexts()) {
        if (line.find(L" FN=") != line.npos) {
            ASSERT_NE(file, std::end(kFiles));
            EXPECT_TRUE(line.ends_with(std::wstring(L"\\") + file++->name)) << testing::PrintToString(line);
        }
    }
    EXPECT_EQ(file, std::end(kFiles));
    m_home.Write(L"wrbscan.ini", "[Global Setting]\r\nUseVirusAlertSeverity=1\r\nHighRiskVirusType=Joke\r\n");
    ScanIniCache().clear();
    EXPECT_EQ(AskFor(L"128"), section(L"UseVirusAlertSeverity = 1\nHighRiskVirusType = Joke\n"));
    ScanIniCache().clear();
}

TEST_F(RqAlertMsg, FileIsReadToItsLimitOrItsFirstNul) {
    const std::wstring long2048(2048, L'a');
    const std::pair<std::wstring, std::wstring> cases[] = {
        // a file, and one that gives the same text
        {long2048 + std::wstring(452, L'b'), long2048},
        {std::wstring(L"ab\0cd", 5), L"ab"},
        {L"\r\na\r\n\r\nb\rc\nd\r", L"\na\n\nb\rc\nd\r"},
    };
    for (const auto& [file, same] : cases) {
        m_home.Write(L"admin\\ALERT.MSG", WideBytes(file));
        const std::wstring answer = AskFor(L"0");
        m_home.Write(L"admin\\ALERT.MSG", WideBytes(same));
        EXPECT_EQ(answer, AskFor(L"0"));
        EXPECT_EQ(answer.size(), 2 + ((12 + same.size()) * 2 + 2) / 3 * 4);
    }
}

TEST_F(RqAlertMsg, AbsentFileIsAnEmptyTextAndTheAgentsBitIsCleared) {
    const wrb::test::FakeDbService database;
    const std::wstring longUid(40, L'u');
    AskFor(L"6", longUid);
    TakeCapturedTexts();
    EXPECT_EQ(AskFor(L"6"), std::wstring(L"1\t") + kMark);
    const auto requests = database.WaitFor(2);
    EXPECT_THAT(requests.at(0).Fields(), ElementsAre(L"DB_SET_CONF_FLAG", L"-1", longUid, L"0", L"32", L"0"));
    EXPECT_THAT(requests.at(1).Fields(), ElementsAre(L"DB_SET_CONF_FLAG", L"-1", L"uid-1", L"0", L"32", L"0"));
    EXPECT_THAT(TakeCapturedTexts(),
                ElementsAre(L"cmdhl_GetClnAlertMsg >>> (6)", L"cmdhm_GetClnAlertMsg enter 6",
                            L"cmdhm_GetClnAlertMsgIni FN=" + (m_home / L"admin\\ALERT.MSG").wstring(),
                            testing::StartsWith(L"[DbClient] Send DB_SET_CONF_FLAG"), L"cmdhl_GetClnAlertMsg exit 1",
                            std::wstring(L"cmdhl_GetClnAlertMsg <<< (1\t") + kMark + L")"));
}

TEST_F(RqAlertMsg, AHeldFileIsAnEmptyTextWithAWarning) {
    const std::wstring path = (m_home / L"admin\\ALERTM.MSG").wstring();
    m_home.Write(L"admin\\ALERTM.MSG", WideBytes(L"text"));
    const wrb::FileHandle held(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(AskFor(L"10"), std::wstring(L"1\t") + kMark);
    EXPECT_THAT(TakeCapturedLog(),
                testing::Contains(CapturedLine{'W', L"cmdhm_GetClnAlertMsgIni - cannot open " + path +
                                                        L", the text is empty: " +
                                                        wrb::WideSystemText(ERROR_SHARING_VIOLATION)}));
}

}  // namespace
