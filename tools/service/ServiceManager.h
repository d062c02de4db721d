// The service manager of this machine, as the subcommands of "service" need it. Each of the functions prints what it
// has done, or why it could not, and returns the exit code.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "Handle.h"
#include "ServiceSpec.h"

namespace wrb {

struct ServiceHandleTraits {
    using Type = SC_HANDLE;
    static SC_HANDLE Empty() noexcept { return nullptr; }
    static void Close(SC_HANDLE handle) noexcept { CloseServiceHandle(handle); }
};
using ServiceHandle = UniqueHandle<ServiceHandleTraits>;

struct InstallOptions {
    std::wstring account;                 // empty: as it is, LocalService for a new service
    std::vector<std::wstring> arguments;  // of the program when it serves; empty: as they are
};

// Makes the service or changes the one that is there: full path of this program, delayed start at boot, restart after
// 5, 30 and 120 seconds. Registers the event source. Makes the folders that the service writes to, below the home
// folder, and gives its account the rights there.
int InstallService(const ServiceSpec& spec, const InstallOptions& options);

// Stops and deletes the service. The event source goes, too. Its data stays but with `purge`, see DataFolders.h.
int UninstallService(const ServiceSpec& spec, bool purge);

int StartService(const ServiceSpec& spec);  // returns when it runs, or has ended
int StopService(const ServiceSpec& spec);   // returns when it has ended
int ShowService(const ServiceSpec& spec);   // kExitServiceNotRunning: it does not run

// Prints "PROGRAM: WHAT: the system's text", and returns kExitFailed; kExitServiceNotRunning when there is no such
// service.
int FailAtService(const ServiceSpec& spec, const std::string& what, DWORD error);

// Waits until the service has left `pending`, for as long as it shows signs of life. False: GetLastError tells.
bool WaitForService(SC_HANDLE service, DWORD pending, SERVICE_STATUS_PROCESS& status);

bool QueryService(SC_HANDLE service, SERVICE_STATUS_PROCESS& status);  // false: GetLastError tells

struct ServiceConfiguration {
    std::wstring commandLine;
    std::wstring account;
};

// Nothing: GetLastError tells.
std::optional<ServiceConfiguration> QueryConfiguration(SC_HANDLE service);

}  // namespace wrb
