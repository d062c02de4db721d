#include <windows.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>

#include "AccessList.h"
#include "CommandLine.h"
#include "Console.h"
#include "DataFolders.h"
#include "EventLog.h"
#include "ExitCode.h"
#include "FolderAccess.h"
#include "HomeFolder.h"
#include "OwnModule.h"
#include "ServiceManager.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kDefaultAccount[] = L"NT AUTHORITY\\LocalService";
constexpr wchar_t kSourcesKey[] = L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\";
constexpr DWORD kReserveMilliseconds = 10'000;  // of a shut-down, beyond the service's own limit
constexpr DWORD kFailuresForgottenSeconds = 86'400;

void Warn(const ServiceSpec& spec, const std::string& what, DWORD error) {
    PrintErr(std::string(spec.program) + ": " + what + ": " + SystemText(error) + "\n");
}

std::wstring CommandLine(const std::vector<std::wstring>& arguments) {
    std::wstring line = L"\"" + OwnModulePath() + L"\" service run";
    for (const std::wstring& argument : arguments) {
        line += L" " + QuotedArgument(argument);
    }
    return line;
}

// Names of the service manager that are no accounts to the rest of the system.
std::optional<std::wstring> ServiceAccountSid(const std::wstring& account) {
    constexpr std::pair<const wchar_t*, const wchar_t*> kNames[] = {
        {L"NT AUTHORITY\\LocalService", L"S-1-5-19"},
        {L"NT AUTHORITY\\NetworkService", L"S-1-5-20"},
        {L"LocalSystem", L"S-1-5-18"},
    };
    for (const auto& [name, sid] : kNames) {
        if (lstrcmpiW(account.c_str(), name) == 0) {
            return sid;
        }
    }
    return AccountSid(account.starts_with(L".\\") ? account.substr(2) : account);
}

std::vector<std::wstring> ArgumentsIn(const std::wstring& commandLine) {
    constexpr std::ptrdiff_t kOwn = 3;  // PROGRAM service run
    std::vector<std::wstring> words = SplitCommandLine(commandLine.c_str());
    words.erase(words.begin(), words.begin() + std::min(kOwn, std::ssize(words)));
    return words;
}

// What is given, else what a service that is there has.
ServiceConfiguration Settle(SC_HANDLE present, const InstallOptions& options) {
    ServiceConfiguration settled{CommandLine(options.arguments), options.account};
    const auto configuration = present != nullptr ? QueryConfiguration(present) : std::nullopt;
    if (configuration && options.arguments.empty()) {
        settled.commandLine = CommandLine(ArgumentsIn(configuration->commandLine));
    }
    if (configuration && options.account.empty()) {
        settled.account = configuration->account;
    }
    if (settled.account.empty()) {
        settled.account = kDefaultAccount;
    }
    return settled;
}

// A list of texts with a zero after each and one more at its end.
std::wstring DependencyList(const ServiceSpec& spec) {
    return spec.dependsOn != nullptr ? std::wstring(spec.dependsOn) + L'\0' : std::wstring(1, L'\0');
}

// Makes the service or changes it. False: GetLastError tells.
bool Register(const ServiceSpec& spec, const InstallOptions& options, ServiceConfiguration& settled,
              ServiceHandle& service) {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
    if (!manager) {
        return false;
    }
    service.Reset(OpenServiceW(manager.Get(), spec.name, SERVICE_ALL_ACCESS));
    if (!service && GetLastError() != ERROR_SERVICE_DOES_NOT_EXIST) {
        return false;
    }
    settled = Settle(service.Get(), options);
    const std::wstring dependencies = DependencyList(spec);
    if (service) {
        const bool changesAccount = !options.account.empty();
        return ChangeServiceConfigW(service.Get(), SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                                    settled.commandLine.c_str(), nullptr, nullptr, dependencies.c_str(),
                                    changesAccount ? settled.account.c_str() : nullptr, changesAccount ? L"" : nullptr,
                                    spec.displayName) != 0;
    }
    service.Reset(CreateServiceW(manager.Get(), spec.name, spec.displayName, SERVICE_ALL_ACCESS,
                                 SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                                 settled.commandLine.c_str(), nullptr, nullptr, dependencies.c_str(),
                                 settled.account.c_str(), L""));
    return static_cast<bool>(service);
}

// What an older system lacks is said and left out.
void Describe(const ServiceSpec& spec, SC_HANDLE service) {
    std::wstring text = spec.description;
    SERVICE_DESCRIPTIONW description{text.data()};
    SERVICE_DELAYED_AUTO_START_INFO delayed{TRUE};
    std::array<SC_ACTION, 3> restarts{
        {{SC_ACTION_RESTART, 5'000}, {SC_ACTION_RESTART, 30'000}, {SC_ACTION_RESTART, 120'000}}};
    SERVICE_FAILURE_ACTIONSW recovery{kFailuresForgottenSeconds, nullptr, nullptr, static_cast<DWORD>(restarts.size()),
                                      restarts.data()};
    SERVICE_FAILURE_ACTIONS_FLAG alsoRefusedStarts{TRUE};
    SERVICE_PRESHUTDOWN_INFO shutdown{spec.stopSeconds * 1'000 + kReserveMilliseconds};
    const struct {
        const char* what;
        DWORD level;
        void* info;
    } kParts[] = {
        {"the service has no description", SERVICE_CONFIG_DESCRIPTION, &description},
        {"the service starts at boot without delay", SERVICE_CONFIG_DELAYED_AUTO_START_INFO, &delayed},
        {"the service is not started again after a failure", SERVICE_CONFIG_FAILURE_ACTIONS, &recovery},
        {"the service is not started again after a refused start", SERVICE_CONFIG_FAILURE_ACTIONS_FLAG,
         &alsoRefusedStarts},
        {"the time for a shut-down is the system's", SERVICE_CONFIG_PRESHUTDOWN_INFO, &shutdown},
    };
    for (const auto& [what, level, info] : kParts) {
        if (!ChangeServiceConfig2W(service, level, info)) {
            Warn(spec, what, GetLastError());
        }
    }
}

DWORD RegisterEventSource(const ServiceSpec& spec) {
    const std::wstring key = kSourcesKey + std::wstring(spec.eventSource);
    const std::wstring file = OwnModulePath();
    const DWORD types = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
    const LSTATUS status = RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"EventMessageFile", REG_EXPAND_SZ,
                                           file.c_str(), static_cast<DWORD>((file.size() + 1) * sizeof(wchar_t)));
    return static_cast<DWORD>(
        status != ERROR_SUCCESS
            ? status
            : RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"TypesSupported", REG_DWORD, &types, sizeof types));
}

// One folder, made when it is missing. `error` is the system's code.
bool Prepare(const std::wstring& folder, const std::wstring& sid, FolderRight right, DWORD& error) {
    error = CreateDirectoryW(folder.c_str(), nullptr) ? ERROR_SUCCESS : GetLastError();
    if (error == ERROR_SUCCESS || error == ERROR_ALREADY_EXISTS) {
        error = GrantFolder(folder, sid, right);
    }
    return error == ERROR_SUCCESS;
}

bool PrepareFolders(const ServiceSpec& spec, const std::wstring& account) {
    const std::optional<std::wstring> sid = ServiceAccountSid(account);
    if (!sid) {
        const DWORD error = GetLastError();
        Warn(spec, "no rights in the home folder for " + WideToUtf8(account), error);
        return false;
    }
    const std::wstring home = HomeFolder();
    const std::wstring secrets = home + L"Private";
    DWORD error = MakePrivateFolder(secrets);
    bool done = error == ERROR_SUCCESS || error == ERROR_ALREADY_EXISTS;
    done = done && Prepare(home, *sid, FolderRight::Read, error) && Prepare(secrets, *sid, FolderRight::Read, error);
    for (const wchar_t* folder : spec.folders) {
        done = done && Prepare(home + folder, *sid, FolderRight::Change, error);
    }
    if (!done) {
        Warn(spec, "cannot prepare the folders below " + WideToUtf8(home), error);
    }
    return done;
}

}  // namespace

int InstallService(const ServiceSpec& spec, const InstallOptions& options) {
    ServiceConfiguration settled;
    ServiceHandle service;
    if (!Register(spec, options, settled, service)) {
        return FailAtService(spec, "cannot install the service", GetLastError());
    }
    Describe(spec, service.Get());
    if (const DWORD error = RegisterEventSource(spec); error != ERROR_SUCCESS) {
        return FailAtService(spec, "cannot register the source of its events", error);
    }
    if (!PrepareFolders(spec, settled.account)) {
        return kExitFailed;
    }
    PrintOut(std::string(spec.program) + ": the service " + WideToUtf8(spec.name) + " is installed for " +
             WideToUtf8(settled.account) + ": " + WideToUtf8(settled.commandLine) + "\n");
    return kExitOk;
}

int UninstallService(const ServiceSpec& spec, bool purge) {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const ServiceHandle service(
        manager ? OpenServiceW(manager.Get(), spec.name, DELETE | SERVICE_STOP | SERVICE_QUERY_STATUS) : nullptr);
    if (!service) {
        return FailAtService(spec, "cannot uninstall the service", GetLastError());
    }
    SERVICE_STATUS_PROCESS status{};
    if (QueryService(service.Get(), status) && status.dwCurrentState != SERVICE_STOPPED) {
        if (const int code = StopService(spec); code != kExitOk) {
            return code;
        }
    }
    if (!DeleteService(service.Get())) {
        return FailAtService(spec, "cannot uninstall the service", GetLastError());
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kSourcesKey + std::wstring(spec.eventSource)).c_str());
    PrintOut(std::string(spec.program) + ": the service is uninstalled\n");
    if (purge && !DeleteData(spec, HomeFolder())) {
        PrintErr(std::string(spec.program) + ": some data below " + WideToUtf8(HomeFolder()) +
                 " is in use and stays\n");
        return kExitFailed;
    }
    return kExitOk;
}

}  // namespace wrb
