#include "HostSettings.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "HomeFolder.h"
#include "StringProtection.h"

namespace wrb {

unsigned ReadWorkerCount() {
    const std::wstring path = wrb::HomeFolder() + L"wrbscan.ini";
    const UINT asked = GetPrivateProfileIntW(L"INI_SERVER_SECTION", L"Command_Handler_Static_Thread_Number",
                                             kDefaultWorkers, path.c_str());
    return static_cast<unsigned>(std::clamp(static_cast<int>(asked), 1, static_cast<int>(kMostWorkers)));
}

bool HasProtectionKey() {
    const std::wstring path = HomeFolder() + L"Private\\wrbserver.ini";
    wchar_t text[sizeof(ProtectionKey) * 2 + 2];  // a key that is too long shows
    GetPrivateProfileStringW(kProtectionKeySection, kProtectionKeyName, L"", text, std::size(text), path.c_str());
    return ParseProtectionKey(text).has_value();
}

}  // namespace wrb
