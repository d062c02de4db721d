#include "HostSettings.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "HomeFolder.h"

namespace wrb {

unsigned ReadWorkerCount() {
    const std::wstring path = wrb::HomeFolder() + L"wrbscan.ini";
    const UINT asked = GetPrivateProfileIntW(L"INI_SERVER_SECTION", L"Command_Handler_Static_Thread_Number",
                                             kDefaultWorkers, path.c_str());
    return static_cast<unsigned>(std::clamp(static_cast<int>(asked), 1, static_cast<int>(kMostWorkers)));
}

}  // namespace wrb
