#include "cmdhl_RqINI.h"

#include <windows.h>

#include <algorithm>

#include "AgentUid.h"
#include "CommandFields.h"
#include "DbScanCfg.h"
#include "DebugLog.h"
#include "INICache.h"
#include "IniValues.h"

namespace wrb {
namespace {

// The computer's name in DNS without its domain; empty, with a log line, when the system does not tell.
std::wstring DnsHostName() {
    wchar_t name[256] = L"";  // a label has at most 63 characters
    auto length = static_cast<DWORD>(std::size(name));
    if (!GetComputerNameExW(ComputerNameDnsHostname, name, &length)) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - no host name, err=%d", L"cmdhl_GetServerName", error);
        return {};
    }
    return name;
}

}  // namespace

bool GetServerName(std::wstring& output) {
    output = ReadIniText(ScanIniCache(), L"INI_CRITICAL_SECTION", L"Master_DomainName");
    if (output.empty()) {
        output = DnsHostName();
    }
    return !output.empty();
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
    if (!GetDbScanGroup(*group, CutUid(uid).c_str(), values)) {
        output.clear();
        return false;
    }
    output = (values.flags & row->bits) != 0 ? L"1" : L"0";
    return true;
}

}  // namespace wrb
