#include <windows.h>

#include <new>

#include "BmPolicyCache.h"
#include "CounterScope.h"
#include "DebugLog.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "IniSchema.h"
#include "Text.h"
#include "TracedDispatch.h"
#include "cmdhl.h"

namespace {

wrb::CommandMap g_commandMap;
void* g_pReserved = nullptr;  // nothing reads it

bool SetUpDebugLog(const wchar_t* debugIni, const wchar_t* debugLibrary) {
    return DebugLogSetup(debugIni, debugLibrary, "CMDHL", true) == 1;
}

// A missing file is no error: its cache gives the defaults.
void InitialiseIniCaches() {
    constexpr std::size_t kPathCharacters = 260;
    const std::wstring homeDir = wrb::HomeFolder();
    const wchar_t* const home = homeDir.c_str();
    wchar_t scanIni[kPathCharacters];
    wchar_t serverIni[kPathCharacters];
    wchar_t sbaIni[kPathCharacters];
    wrb::FormatInto(scanIni, kPathCharacters, L"%s%s", home, wrb::kScanIniFile);
    wrb::FormatInto(serverIni, kPathCharacters, L"%s%s", home, wrb::kServerIniFile);
    // The server's other programs use this path, with its doubled separator and lower-case "private".
    wrb::FormatInto(sbaIni, kPathCharacters, L"%s\\private\\%s", home, L"wrbSbaSvr.ini");
    WRB_LOG(kLogInfo, L"%s - cmdhl_Initialize: ini home:[%s]", L"cmdhl_Initialize", scanIni);
    ScanIniCache().init(scanIni, 6);
    ServerIniCache().init(serverIni, 6);
    SbaIniCache().init(sbaIni, 30);
}

// Without memory for it the start goes on without the warnings.
void WarnOfUnknownKeys() {
    try {
        wrb::WarnOfUnknownIniKeys(ScanIniCache(), ServerIniCache());
    } catch (const std::bad_alloc&) {
        WRB_LOG(kLogError, L"%s - no memory to look for unknown keys", L"cmdhl_Initialize");
    }
}

// A second start keeps the cache: a running command may be reading it.
void CreatePolicyCache() {
    if (g_pBmPolicyCache != nullptr) {
        return;
    }
    try {
        g_pBmPolicyCache = new wrb::BmPolicyCache;
    } catch (const std::bad_alloc&) {
        WRB_LOG(kLogError, L"%s - Failed to new g_pBmPolicyCache", L"cmdhl_Initialize");
    }
}

}  // namespace

bool cmdhl_Initialize(const wchar_t* debugIni, const wchar_t* debugLibrary, void* reserved) {
    const bool externalLog = SetUpDebugLog(debugIni, debugLibrary);
    wrb::AddCommands(g_commandMap, wrb::CommandTable());
    g_pReserved = reserved;
    InitialiseIniCaches();
    WarnOfUnknownKeys();
    wrb::StartCounters();
    wrb::StartTrace();
    CreatePolicyCache();
    return externalLog;
}

unsigned cmdhl_Process(const wchar_t* message, unsigned long long bytes) {
    return wrb::TracedDispatch(g_commandMap, message, bytes);
}

bool cmdhl_Finalize(void) {
    WRB_LOG(kLogDebug8, L"cmdhl_Finalize: Called");
    wrb::StopCounters();
    delete g_pBmPolicyCache;
    g_pBmPolicyCache = nullptr;
    return false;
}

bool cmdhl_ReloadDebugSetting(const wchar_t* debugIni, const wchar_t* debugLibrary) {
    return SetUpDebugLog(debugIni, debugLibrary);
}
