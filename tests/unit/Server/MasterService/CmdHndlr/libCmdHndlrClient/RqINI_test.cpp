// The requests for INI sections and facts about the server: answer, lines and counter of each, with an INI file and a
// database server of the test's own.
#include <algorithm>
#include <atomic>

#include "Ask.h"
#include "CapturedLog.h"
#include "ChildProcess.h"
#include "CounterSection.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "OwnModule.h"
#include "ServerHome.h"
#include "Text.h"

extern "C" LONG WINAPI RtlGetVersion(OSVERSIONINFOW* version);  // of ntdll

namespace {

using wrb::test::WideBytes;

// Of the server, as the INI file below has it.
constexpr wchar_t kCritical[] =
    L"[INI_CRITICAL_SECTION]\nMaster_DomainName=server.example\nMaster_DomainPort=0\nMaster_SSLPort=-1\nUseProxy=1\n"
    L"Proxy_IP=\nProxy_Port=0\nProxy_Login=\nProxy_Pwd=724DB49D45B03FE3B3A463B95F7B8B40\nIntranet_Proxy_Socks=0\n"
    L"Intranet_NoProxyCache=0\nHTTP_Expired_Day=7\nUninstall_Pwd=09433e1853385270b51511571e35eeca\nUnload_Pwd=\n"
    L"Uninst=1\nUnload=0\nAllowUpdateFromCWAU=0\nAllowUpdateFromOtherAU=0\nMaster_Program_URL=\n"
    L"Calloway_AU_Master_Program_URL=\nMobile=0\nAllowScheduleUpdate=0\nUseHttp=1\nAllowStopScheduleScan=0\n"
    L"AllowDelayScheduleScan=0\nAllowCfgNotification=0\nEnableScheduleScanWarning=0\nEnableVirEmailWarning=0\n"
    L"ClnAlertEnabled=0\nSablxAlertEnabled=0\nAllowPromptRebootForCleanup=0\nMailScanPageOnOff=0\n"
    L"EnablePop3MailScan=0\nUrlFilterAlertEnabled=0\nAllowUpdateNow=0\nActAsUpdateAgent=0\n"
    L"ProvideUpdateAgentComponentService=0\nProvideUpdateAgentSettingService=0\nProvideUpdateAgentProgramService=0\n"
    L"ProxySettingOnOff=0\nAllowControlPFW=0\nAllowSendPFWLog=0\nDisplayPFWTab=0\nSecurity=0\n"
    L"ScheduleUpdateEnableDisable=0\nNoProgramUpgrade=0\nNoEngineUpgrade=0\nAllowCfg=0\nAllowCfgBM=0\nSendBMLog=0\n"
    L"BMPopupAlert=0\nSP_EnableFileProtection=0\nSP_EnableRegistryKeyProtection=0\nSP_EnableProcessProtection=0\n"
    L"ECSP=0\nFAPopupAlert=0\nGCLCacheEnable=0\nGCLCacheRebuildDays=0\nOdscEnable=0\nOdscCriteriaDays=0\n"
    L"OdscMaxExpiredDays=0\nDlpDeploy=0\nTrustedProgram=a|b\nMDRSetting=\nServicePack_Version=\n"
    L"[INI_SCHEDULE_SECTION]\nScheduleUpdateInterval=2\nScheduleCheckGlobalSetting=0\nScheduleUpdateStartWeekday=0\n"
    L"ScheduleUpdateStartHour=23\nScheduleUpdateStartMin=0\nScheduleUpdateCompletePeriod=0\n";

constexpr wchar_t kComponents[] =
    L"[INI_COMPONENT_VERSION_SECTION]\nPtnfile_Version=\nTSCPtn_Version=\nDCS_Spy_Ptn_Version=\n"
    L"Trap_WhiteList_Version=\nTrap_BlackList_Version=\nSSAPI_Engine_Version=\nSSAPI_Engine_x64_Version=\n"
    L"SSAPI_Pattern_Version=\nSSAPI_VSAPI_Spy_Pattern_Version=\nRootkit_Common_Module_Version=\nTSCEng_Version=18.1\n"
    L"SpyWarePtn_Version=\nCTAPrg_Version=\nCFWPtn_Version=\nCFWEngNT_Version=\nWFPEngNT_Version=\nPccNT_Version=\n"
    L"EngineNT_Version=\nHotfix=\nHotfixX86=\nHotfixX64=B 7\n";

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
    {38, L"cmdhl_GetINICritical", L"INI_CRITICAL", L"", kCritical},
    {38, L"cmdhl_GetINICritical", L"INI_CRITICAL", L"other", L""},
    {39, L"cmdhl_GetINIComponentVer", L"INI_COMPONENT_VER", L"", kComponents, false},
    {58, L"cmdhl_GetServerName", L"SERVER_NAME", L"", L"server.example", false},
    {60, L"cmdhl_GetProductInfo", L"PRODUCT_INFO", L"other", L"The product\t14.0\t0\t@\t0\t0"},
    {70, L"cmdhl_GetServerPolicy", L"SERVER_POLICY", L"known", L""},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t1", L"1"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t2", L"0"},  // has no configuration
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t4", L"0"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known\t1024", L"0"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"known", L"0"},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"other\t2", L""},
    {71, L"cmdhl_GetCfgPermission", L"CFG_PERMISSION", L"\t2", L""},
};

constexpr const wchar_t* kPrivileges[] = {  // bit 0 and up
    L"ScheduleUpdateEnableDisable",
    L"EnableScheduleScanWarning",
    L"Uninst",
    L"Unload",
    L"AllowUpdateFromCWAU",
    L"AllowUpdateFromOtherAU",
    L"Mobile",
    L"AllowScheduleUpdate",
    L"AllowStopScheduleScan",
    L"AllowDelayScheduleScan",
    L"EnablePop3MailScan",
    L"EnableVirEmailWarning",
    L"AllowCfgNotification",
    L"ClnAlertEnabled",
    L"SablxAlertEnabled",
    L"AllowPromptRebootForCleanup",
    L"MailScanPageOnOff",
    L"UrlFilterAlertEnabled",
    L"AllowUpdateNow",
    L"ProxySettingOnOff",
    L"AllowControlPFW",
    L"AllowSendPFWLog",
    L"DisplayPFWTab",
    L"AllowCfg",
    L"AllowCfgBM"};
std::atomic<uint32_t> g_privileges{0};

// The agent "known" has an empty password for unloading.
std::optional<std::string> AnswerOf(const wrb::test::DbRequest& request) {
    if (request.IsMessage() || request.Fields().at(2) != L"known") {
        return "";
    }
    const std::vector<std::wstring> fields = request.Fields();
    const std::wstring question = request.Name() + L" " + (fields.size() > 3 ? fields[3] : L"");
    const std::pair<const wchar_t*, std::wstring> answers[] = {
        {L"DB_IS_CLIENT_EXISTED ", L"1"},
        {L"DB_GET_MSCF 0", L"2"},
        {L"DB_GET_PSCF 0", L"-3"},
        {L"DB_GET_PRIVILEGE 0", std::to_wstring(g_privileges) + L"\t-1"},
        {L"DB_GET_CLIENT_PASSWORD 0", L"p\u00e4ss"},
    };
    const auto* const found =
        std::ranges::find(answers, question, [](const auto& row) { return std::wstring(row.first); });
    return found != std::end(answers) ? WideBytes(found->second) : "";
}

// The lines of `text` with another value of the key.
std::wstring WithValue(std::wstring text, const std::wstring& key, const std::wstring& value) {
    const std::size_t at = text.find(L"\n" + key + L"=") + key.size() + 2;
    return text.replace(at, text.find(L'\n', at) - at, value);
}

// The lines of the handlers' module.
std::vector<CapturedLine> TakeHandlerLines() {
    std::vector<CapturedLine> lines = TakeCapturedLog();
    std::erase_if(lines, [](const CapturedLine& line) { return !line.sourceFile.ends_with(L"\\cmdhl_RqINI.cpp"); });
    return lines;
}

std::wstring WithSystemVersion(std::wstring text) {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    RtlGetVersion(&version);
    if (const std::size_t at = text.find(L'@'); at != text.npos) {
        text.replace(
            at, 1, wrb::FormatWide(L"%u.%u.%u", version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber));
    }
    return text;
}

TEST(RqINI, EachAnswersLogsAndCounts) {
    const wrb::test::ServerHome home;
    home.Write(
        L"wrbscan.ini",
        "[global setting]\r\nb = "
        "2\r\na=\"\r\n[INI_SCAN_SERVICE_LIST_SECTION]\r\ns=\r\n[INI_SERVICE_MODEL_SECTION]\r\nk=" +
            std::string(32'765, 'v') +
            "\r\n[INI_LOCAL_SCAN_SECTION]\r\nl=1\r\n[INI_CRITICAL_SECTION]\r\nMaster_DomainName=server.example\r\n"
            "Master_SSLPort=-1\r\nUseProxy=2\r\nProxy_Pwd=pass\r\nIntranet_NoProxyCache=-1\r\nUninstall_Pwd=secret\r\n"
            "Uninst=1\r\nUseHttp=1\r\nHTTP_Expired_Day=7\r\nTrustedProgram=a|b\r\n[INI_SCHEDULE_SECTION]\r\n"
            "ScheduleUpdateInterval=2\r\nScheduleUpdateStartHour=23\r\n[INI_COMPONENT_VERSION_SECTION]\r\n"
            "TSCEng_Version=18.1\r\nHotfixX64=\"B 7\"\r\n");
    home.Write(
        L"Private\\wrbserver.ini",
        "[INI_SERVER_SECTION]\r\nStringProtectionKey=00112233445566778899aabbccddeeff0123456789abcdeffedcba9876543210"
        "\r\n[INI_PRODUCT_SECTION]\r\nProductName=The product\r\nProductVersion=14.0\r\n");
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
        const std::wstring answer = WithSystemVersion(row.answer);
        TakeCapturedLog();
        EXPECT_EQ(Ask(command.c_str(), row.fields), answer);
        std::vector<CapturedLine> expected = {{8, name + L": output:[" + answer + L"]"}};
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
    for (std::size_t bit = 0; bit <= std::size(kPrivileges); ++bit) {
        g_privileges = 1u << bit;
        std::wstring expected =
            WithValue(WithValue(kCritical, L"Uninst", L"0"), L"Uninstall_Pwd", L"f2d4bedbae9a7fd1802d68f65b358f2a");
        if (bit < std::size(kPrivileges)) {
            expected = WithValue(expected, kPrivileges[bit], L"1");
        }
        EXPECT_EQ(Ask(L"CMDHL_GET_INI_CRITICAL", L"known"), expected) << bit;
    }
    ScanIniCache().writeINIString(L"INI_CRITICAL_SECTION", L"Master_DomainName", L"");
    const std::wstring hostName = Ask(L"CMDHL_GET_SERVER_NAME", L"");
    EXPECT_TRUE(!hostName.empty() && hostName.find_first_of(L".\t\n") == hostName.npos) << "of an empty key";
    cmdhl_Finalize();
}

// The values of the library's own resource, which a test program does not have.
TEST(RqINI, AModuleHasAVersion) {
    const wrb::ModuleVersion version = wrb::ReadModuleVersion(wrb::test::ProgramFolder() + L"libCmdHndlrClient.dll");
    EXPECT_EQ(version.productName, L"Warrenby");
    EXPECT_EQ(version.productVersion.find_first_not_of(L".0123456789"), std::wstring::npos);
    EXPECT_NE(version.productVersion, L"");
    EXPECT_TRUE(wrb::OwnModulePath().ends_with(L"\\libCmdHndlrClient_test.exe"));
}

}  // namespace
