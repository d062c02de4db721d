#include "HostSettings.h"

#include <windows.h>

#include <algorithm>

#include "AccessList.h"
#include "HomeFolder.h"
#include "ProtectionKeyFile.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSection[] = L"INI_SERVER_SECTION";
constexpr DWORD kAccountsCharacters = 8192;

unsigned Number(const std::optional<unsigned>& option, const std::wstring& file, const wchar_t* key, unsigned byDefault,
                unsigned most) {
    const unsigned asked =
        option ? *option : GetPrivateProfileIntW(kSection, key, static_cast<INT>(byDefault), file.c_str());
    return static_cast<unsigned>(std::clamp(static_cast<int>(asked), 1, static_cast<int>(most)));
}

// Nothing: the list is too long. The system cuts it, and the rest of a SID may be that of another account.
std::optional<std::vector<std::wstring>> Accounts(const std::wstring& file) {
    std::wstring list(kAccountsCharacters, L'\0');
    list.resize(GetPrivateProfileStringW(kSection, L"CommandPipeAccounts", L"", list.data(), kAccountsCharacters,
                                         file.c_str()));
    return list.size() < kAccountsCharacters - 1 ? std::optional(ListItems(list)) : std::nullopt;
}

}  // namespace

std::string ReadHostSettings(const HostOptions& options, CommandHostOptions& settings) {
    const std::wstring home = HomeFolder();
    const std::wstring server = home + kServerIniFile;
    const CommandHostOptions defaults;
    settings.lanes.workers = Number(options.workers, home + kScanIniFile, L"Command_Handler_Static_Thread_Number",
                                    defaults.lanes.workers, kMostWorkers);
    settings.lanes.queuedPerLane = Number(options.queue, server, L"CommandQueueLength",
                                          static_cast<unsigned>(defaults.lanes.queuedPerLane), kMostQueued);
    settings.connections =
        Number(options.connections, server, L"CommandConnections", defaults.connections, kMostConnections);
    settings.memoryBudget = std::size_t{Number(options.memoryMiB, server, L"CommandMemoryInM",
                                               static_cast<unsigned>(defaults.memoryBudget >> 20), kMostMemoryMiB)}
                            << 20;
    std::optional<std::vector<std::wstring>> accounts = Accounts(server);
    if (!accounts) {
        return "CommandPipeAccounts of Private\\wrbserver.ini has more than " +
               std::to_string(kAccountsCharacters - 2) + " characters";
    }
    for (const std::string& account : options.allowed) {
        accounts->push_back(Utf8ToWide(account));
    }
    if (const auto unknown = AddAccountSids(*accounts, settings.allowed)) {
        return "no such account: " + WideToUtf8(*unknown);
    }
    return {};
}

bool HasProtectionKey() {
    return ReadProtectionKey(HomeFolder() + kServerIniFile).has_value();
}

}  // namespace wrb
