// The requests for INI sections and facts about the server: answer, lines and counter of each, with an INI file and a
// database server of the test's own.
#include "Ask.h"
#include "CapturedLog.h"
#include "CounterSection.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "ServerHome.h"
#include "Text.h"

namespace {

using wrb::test::WideBytes;

constexpr struct {
    uint32_t slot;
    const wchar_t* handler;
    const wchar_t* command;  // behind "CMDHL_GET_"
    const wchar_t* fields;   // after the reply pipe
    const wchar_t* answer;
    bool logsUid = true;
} kRows[] = {
    {34, L"cmdhl_GetINIGlobalSetting", L"INI_GLOBALSETTING", L"x", L"[Global Setting]\nb=2\na=\"\n", false},
    {35, L"cmdhl_GetINIOtherUpdateSrc", L"INI_OTHERUPDATESRC", L"", L"[INI_OTHER_UPDATE_SOURCE_SECTION]\n", false},
    {36, L"cmdhl_GetINIScanServiceList", L"INI_SCANSERVICELIST", L"", L"[INI_SCAN_SERVICE_LIST_SECTION]\ns=\n", false},
    {37, L"cmdhl_GetINIServiceModel", L"INI_SERVICEMODEL", L"", L"", false},
    {64, L"cmdhl_GetINILocalScanSetting", L"INI_LOCALSCANSETTING", L"", L"[INI_LOCAL_SCAN_SECTION]\nl=1\n", false},
    {58, L"cmdhl_GetServerName", L"SERVER_NAME", L"", L"server.example", false},
    {70, L"cmdhl_GetServerPolicy", L"SERVER_POLICY", L"known", L""},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t1", L"1"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t4", L"0"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t1024", L"0"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known", L"0"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"other\t2", L""},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"\t2", L""},
};

std::optional<std::string> AnswerOf(const wrb::test::DbRequest& request) {
    const std::wstring name = request.Name();
    const bool known = !request.IsMessage() && request.Fields().at(2) == L"known";
    return !known ? "" : WideBytes(name == L"DB_GET_MSCF" ? L"2" : name == L"DB_GET_PSCF" ? L"-3" : L"");
}

// The lines of the handlers' module.
std::vector<CapturedLine> TakeHandlerLines() {
    std::vector<CapturedLine> lines = TakeCapturedLog();
    std::erase_if(lines, [](const CapturedLine& line) { return !line.sourceFile.ends_with(L"\\cmdhl_RqINI.cpp"); });
    return lines;
}

TEST(RqINI, EachAnswersLogsAndCounts) {
    const wrb::test::ServerHome home;
    home.Write(
        L"wrbscan.ini",
        "[global setting]\r\nb = "
        "2\r\na=\"\r\n[INI_SCAN_SERVICE_LIST_SECTION]\r\ns=\r\n[INI_SERVICE_MODEL_SECTION]\r\nk=" +
            std::string(32'765, 'v') +
            "\r\n[INI_LOCAL_SCAN_SECTION]\r\nl=1\r\n[INI_CRITICAL_SECTION]\r\nMaster_DomainName=server.example\r\n");
    const wrb::test::FakeDbService db(AnswerOf);
    cmdhl_Initialize(L"", L"", nullptr);
    Tell(L"CMDHL_CLEAR_INI_CACHE");
    wrb::CounterReader counters;
    uint32_t error = 0;
    ASSERT_EQ(counters.Attach(error), wrb::CounterAttach::Attached) << error;
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.slot << ' ' << std::wstring(row.fields));
        const std::wstring command = L"CMDHL_GET_" + std::wstring(row.command);
        const std::wstring name = row.handler;
        const uint32_t calls = counters.Slot(row.slot).calls;
        TakeCapturedLog();
        EXPECT_EQ(Ask(command.c_str(), row.fields), row.answer);
        std::vector<CapturedLine> expected = {{8, name + L": output:[" + row.answer + L"]"}};
        if (row.logsUid) {
            const std::wstring fields = row.fields;
            expected.insert(expected.begin(), {8, name + L": uid:[" + fields.substr(0, fields.find(L'\t')) + L"]"});
        }
        EXPECT_EQ(TakeHandlerLines(), expected);
        Tell(command + L"\tnobody\t" + row.fields);
        expected.push_back({'E', name + L" - cmdhl_OutputCommand failed."});
        EXPECT_EQ(TakeHandlerLines(), expected);
        EXPECT_EQ(counters.Slot(row.slot).calls, calls + 2);
    }
    ScanIniCache().writeINIString(L"INI_CRITICAL_SECTION", L"Master_DomainName", L"");
    const std::wstring hostName = Ask(L"CMDHL_GET_SERVER_NAME", L"");
    EXPECT_TRUE(!hostName.empty() && hostName.find_first_of(L".\t\n") == hostName.npos) << "of an empty key";
    cmdhl_Finalize();
}

}  // namespace
