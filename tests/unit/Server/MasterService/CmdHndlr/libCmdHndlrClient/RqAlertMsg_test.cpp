// The texts of alerts: which file a type has, how its text is encoded, and the section with all of them.
#include <gmock/gmock.h>

#include "Ask.h"
#include "CounterSection.h"
#include "FakeDbService.h"
#include "FakeLogService.h"
#include "INICache.h"
#include "ServerHome.h"

namespace {

using testing::ElementsAre;
using wrb::test::WideBytes;

constexpr wchar_t kCommand[] = L"CMDHL_CMDHL_GET_CLN_ALERT_MSG";
// The mark alone. It is a whole number of base64 groups, so that what follows is the message's own encoding.
constexpr wchar_t kMark[] = L"IAAhAEIAQQBTAEUANgA0AEUARAAhACAA";

class RqAlertMsg : public testing::Test {
  protected:
    void SetUp() override { cmdhl_Initialize(L"", L"", nullptr); }
    void TearDown() override { cmdhl_Finalize(); }

    static std::wstring AskFor(const std::wstring& type, const std::wstring& uid = L"uid-1") {
        return Ask(kCommand, uid + L"\t" + type);
    }

    wrb::test::CServerHome m_home;
    wrb::test::CFakeLogService m_log;
};

// Three characters a file are two whole groups of base64.
TEST_F(RqAlertMsg, EveryTypeHasItsFileAndEightHaveCounters) {
    const struct {
        const wchar_t* file;
        const char* text;
        const wchar_t* encoded;
        std::vector<const wchar_t*> types;
        uint32_t slot;
    } files[] = {
        {L"ALERT.MSG", "A\0A\0A\0", L"QQBBAEEA", {L"0"}, 120},
        {L"ALERTCFW.MSG", "B\0B\0B\0", L"QgBCAEIA", {L"1"}, 121},
        {L"AlertAS.MSG", "C\0C\0C\0", L"QwBDAEMA", {L"3"}, 122},
        {L"AlertWSR.MSG", "D\0D\0D\0", L"RABEAEQA", {L"5"}, 123},
        {L"AlertDAC.MSG", "E\0E\0E\0", L"RQBFAEUA", {L"7"}, 124},
        {L"AlertBM.MSG", "F\0F\0F\0", L"RgBGAEYA", {L"8"}, 125},
        {L"AlertSABLEX.MSG", "G\0G\0G\0", L"RwBHAEcA", {L"15"}, 126},
        {L"ALERTH.MSG", "H\0H\0H\0", L"SABIAEgA", {L"9"}, 0},
        {L"ALERTM.MSG", "I\0I\0I\0", L"SQBJAEkA", {L"10"}, 0},
        {L"ALERTL.MSG", "J\0J\0J\0", L"SgBKAEoA", {L"11"}, 0},
        {L"AlertDLP.MSG", "K\0K\0K\0", L"SwBLAEsA", {L"12"}, 0},
        {L"AlertCCCA.MSG", "L\0L\0L\0", L"TABMAEwA", {L"13"}, 0},
        {L"AlertQKA.MSG", "M\0M\0M\0", L"TQBNAE0A", {L"14"}, 0},
        {L"ALERT.MSG", "A\0A\0A\0", L"QQBBAEEA", {L"2", L"4", L"6", L"16", L"-1", L"127", L"129"}, 0},
    };
    wrb::CCounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), wrb::CounterAttach::Attached) << error;
    for (const auto& row : files) {
        m_home.Write(std::wstring(L"admin\\") + row.file, std::string(row.text, 6));
    }
    for (const auto& row : files) {
        for (const wchar_t* type : row.types) {
            EXPECT_EQ(AskFor(type), std::wstring(L"1\t") + kMark + row.encoded);
        }
        EXPECT_EQ(row.slot == 0 ? 1 : counters.Slot(row.slot).calls, 1u) << row.slot;
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
    m_log.TakeTexts();
    EXPECT_EQ(AskFor(L"128"), section(L"UseVirusAlertSeverity = 0\nHighRiskVirusType = Worm,Trojan\n"));
    std::vector<std::wstring> read;
    for (const std::wstring& line : m_log.TakeTexts()) {
        if (line.find(L" FN=") != line.npos) {
            read.push_back(line.substr(line.rfind(L'\\') + 1));
        }
    }
    EXPECT_THAT(read, ElementsAre(L"ALERT.MSG", L"ALERTCFW.MSG", L"AlertAS.MSG", L"AlertWSR.MSG", L"AlertCCCA.MSG",
                                  L"AlertDAC.MSG", L"AlertBM.MSG", L"AlertQKA.MSG", L"AlertDLP.MSG", L"ALERTH.MSG",
                                  L"ALERTM.MSG", L"ALERTL.MSG", L"AlertSABLEX.MSG"));
    m_home.Write(L"wrbscan.ini", "[Global Setting]\r\nUseVirusAlertSeverity=1\r\nHighRiskVirusType=Joke\r\n");
    ScanIniCache().clear();
    EXPECT_EQ(AskFor(L"128"), section(L"UseVirusAlertSeverity = 1\nHighRiskVirusType = Joke\n"));
    ScanIniCache().clear();
}

TEST_F(RqAlertMsg, FileIsReadToItsLimitOrItsFirstNul) {
    const std::wstring long2048(2048, L'a');
    const struct {
        std::wstring file;
        std::wstring same;  // a file that gives the same text
    } cases[] = {
        {long2048 + std::wstring(452, L'b'), long2048},
        {std::wstring(L"ab\0cd", 5), L"ab"},
        {L"\r\na\r\n\r\nb\rc\nd\r", L"\na\n\nb\rc\nd\r"},
    };
    for (const auto& row : cases) {
        m_home.Write(L"admin\\ALERT.MSG", WideBytes(row.file));
        const std::wstring answer = AskFor(L"0");
        m_home.Write(L"admin\\ALERT.MSG", WideBytes(row.same));
        EXPECT_EQ(answer, AskFor(L"0"));
        EXPECT_EQ(answer.size(), 2 + ((12 + row.same.size()) * 2 + 2) / 3 * 4);
    }
}

TEST_F(RqAlertMsg, AbsentFileIsAnEmptyTextAndTheAgentsBitIsCleared) {
    const wrb::test::CFakeDbService database;
    const std::wstring longUid(40, L'u');
    AskFor(L"6", longUid);
    m_log.TakeTexts();
    EXPECT_EQ(AskFor(L"6"), std::wstring(L"1\t") + kMark);
    const auto requests = database.WaitFor(2);
    EXPECT_THAT(requests.at(0).Fields(), ElementsAre(L"DB_SET_CONF_FLAG", L"-1", longUid, L"0", L"32", L"0"));
    EXPECT_THAT(requests.at(1).Fields(), ElementsAre(L"DB_SET_CONF_FLAG", L"-1", L"uid-1", L"0", L"32", L"0"));
    EXPECT_THAT(m_log.TakeTexts(),
                ElementsAre(L"cmdhl_GetClnAlertMsg >>> (6)", L"cmdhm_GetClnAlertMsg enter 6",
                            L"cmdhm_GetClnAlertMsgIni FN=" + (m_home / L"admin\\ALERT.MSG").wstring(),
                            testing::StartsWith(L"[DbClient] Send DB_SET_CONF_FLAG"), L"cmdhl_GetClnAlertMsg exit 1",
                            std::wstring(L"cmdhl_GetClnAlertMsg <<< (1\t") + kMark + L")"));
}

}  // namespace
