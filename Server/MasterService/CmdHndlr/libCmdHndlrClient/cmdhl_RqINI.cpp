#include "cmdhl_RqINI.h"

#include <windows.h>

#include <algorithm>

#include "AgentUid.h"
#include "CmdProtocol.h"
#include "CommandFields.h"
#include "DbScanCfg.h"
#include "DebugLog.h"
#include "INICache.h"
#include "IniValues.h"
#include "OwnModule.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

// The computer's name in DNS without its domain; empty, with a log line, when the system does not tell.
std::wstring DnsHostName() {
    wchar_t name[256] = L"";  // a label has at most 63 characters
    auto length = static_cast<DWORD>(std::size(name));
    if (!GetComputerNameExW(ComputerNameDnsHostname, name, &length)) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - no host name: %s", L"cmdhl_GetServerName", WideSystemText(error).c_str());
        return {};
    }
    return name;
}

std::wstring ProductSetting(const wchar_t* key, const std::wstring& defaultText) {
    return ReadIniText(ServerIniCache(), L"INI_PRODUCT_SECTION", key, defaultText.c_str());
}

// The true version: GetVersionEx tells a program without a manifest an old one.
std::wstring SystemVersion() {
    using Function = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    const FARPROC function = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    if (function != nullptr) {
        reinterpret_cast<Function>(reinterpret_cast<void*>(function))(&version);
    }
    return FormatWide(L"%u.%u.%u", static_cast<unsigned>(version.dwMajorVersion),
                      static_cast<unsigned>(version.dwMinorVersion), static_cast<unsigned>(version.dwBuildNumber));
}

}  // namespace

bool GetServerName(std::wstring& output) {
    output = ReadIniText(ScanIniCache(), L"INI_CRITICAL_SECTION", L"Master_DomainName");
    if (output.empty()) {
        output = DnsHostName();
    }
    return !output.empty();
}

bool GetProductInfo(std::wstring& output, const wchar_t* uid) {
    static const ModuleVersion own = OwnModuleVersion();
    const std::wstring agent = CutUid(uid);
    uint32_t platform = 0;
    uint32_t architecture = 0;
    if (!agent.empty()) {
        dbGetClientPlatW(agent.c_str(), platform, 0);
        dbGetArchitectureW(agent.c_str(), architecture, 0);
    }
    CCmdProtocol answer;
    answer << ProductSetting(L"ProductName", own.productName) << ProductSetting(L"ProductVersion", own.productVersion)
           << ProductSetting(L"BuildNumber", std::to_wstring(own.build)) << SystemVersion() << platform << architecture;
    output = answer.Text();
    return true;
}

bool GetCfgPermission(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields) {
    const uint32_t bit = TakeUnsigned(fields);
    const auto group = std::ranges::find_if(kScanGroups, [bit](const ScanGroup& candidate) {
        return candidate.kind == ScanGroupKind::Main && candidate.configFlag == bit;
    });
    output = L"0";
    if (group == kScanGroups.end()) {
        return true;
    }
    const auto row = std::ranges::find(group->rows, L"AllowCfg", &ScanRow::key);
    if (row == group->rows.end()) {
        return true;
    }
    ScanGroupValues values;
    const std::wstring agent = CutUid(uid);
    if (GetDbScanGroup(*group, agent.c_str(), values)) {
        output = (values.flags & row->bits) != 0 ? L"1" : L"0";
    } else if (agent.empty() || !IsKnownAgent(agent.c_str())) {  // a known agent may have no configuration
        output.clear();
    }
    return !output.empty();
}

}  // namespace wrb
