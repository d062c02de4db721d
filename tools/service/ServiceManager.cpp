#include "ServiceManager.h"

#include <algorithm>

#include "Console.h"
#include "ExitCode.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr DWORD kPollMilliseconds = 100;
constexpr DWORD kSilenceMilliseconds = 30'000;  // without a sign of life

const char* StateText(DWORD state) {
    constexpr const char* kStates[] = {"unknown", "stopped",    "starting", "stopping",
                                       "running", "continuing", "pausing",  "paused"};
    return kStates[std::min<DWORD>(state, 7)];
}

// Why a stopped service has ended; empty when nothing is wrong.
std::string EndText(const SERVICE_STATUS_PROCESS& status) {
    switch (status.dwWin32ExitCode) {
        case ERROR_SUCCESS:
        case ERROR_SERVICE_NEVER_STARTED:
            return {};
        case ERROR_SERVICE_SPECIFIC_ERROR:
            return std::string(StartFaultText(static_cast<StartFault>(status.dwServiceSpecificExitCode))) +
                   " (service-specific code " + std::to_string(status.dwServiceSpecificExitCode) +
                   "); the event log has the reason";
        default:
            return SystemText(status.dwWin32ExitCode);
    }
}

int Say(const ServiceSpec& spec, const std::string& text, int code = kExitOk) {
    const std::string line = std::string(spec.program) + ": the service " + text + "\n";
    code == kExitOk ? PrintOut(line) : PrintErr(line);
    return code;
}

// The service, opened for `access`. Empty: GetLastError tells.
ServiceHandle OpenOwnService(const ServiceSpec& spec, DWORD access) {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    return ServiceHandle(manager ? OpenServiceW(manager.Get(), spec.name, access) : nullptr);
}

// The manager refuses while it starts another service.
bool AskToStart(SC_HANDLE service) {
    const ULONGLONG begin = GetTickCount64();
    while (!StartServiceW(service, 0, nullptr)) {
        if (GetLastError() != ERROR_SERVICE_DATABASE_LOCKED || GetTickCount64() - begin >= kSilenceMilliseconds) {
            return false;
        }
        Sleep(kPollMilliseconds);
    }
    return true;
}

}  // namespace

int FailAtService(const ServiceSpec& spec, const std::string& what, DWORD error) {
    PrintErr(std::string(spec.program) + ": " + what + ": " + SystemText(error) + "\n");
    return error == ERROR_SERVICE_DOES_NOT_EXIST ? kExitServiceNotRunning : kExitFailed;
}

bool QueryService(SC_HANDLE service, SERVICE_STATUS_PROCESS& status) {
    DWORD bytes = 0;
    return QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status), sizeof status,
                                &bytes) != 0;
}

std::optional<ServiceConfiguration> QueryConfiguration(SC_HANDLE service) {
    alignas(QUERY_SERVICE_CONFIGW) BYTE room[8192];  // the system's limit
    auto* const found = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(room);
    DWORD bytes = 0;
    if (!QueryServiceConfigW(service, found, sizeof room, &bytes)) {
        return std::nullopt;
    }
    const wchar_t* const account = found->lpServiceStartName;
    return ServiceConfiguration{found->lpBinaryPathName, account != nullptr ? account : L""};
}

bool WaitForService(SC_HANDLE service, DWORD pending, SERVICE_STATUS_PROCESS& status) {
    DWORD checkPoint = 0;
    ULONGLONG last = GetTickCount64();
    while (QueryService(service, status)) {
        if (status.dwCurrentState != pending) {
            return true;
        }
        const ULONGLONG now = GetTickCount64();
        if (status.dwCheckPoint != checkPoint) {
            checkPoint = status.dwCheckPoint;
            last = now;
        } else if (now - last >= kSilenceMilliseconds) {
            SetLastError(ERROR_SERVICE_REQUEST_TIMEOUT);
            return false;
        }
        Sleep(kPollMilliseconds);
    }
    return false;
}

int StartService(const ServiceSpec& spec) {
    const ServiceHandle service = OpenOwnService(spec, SERVICE_START | SERVICE_QUERY_STATUS);
    SERVICE_STATUS_PROCESS status{};
    if (!service || !AskToStart(service.Get()) || !WaitForService(service.Get(), SERVICE_START_PENDING, status)) {
        return FailAtService(spec, "cannot start the service", GetLastError());
    }
    if (status.dwCurrentState == SERVICE_RUNNING) {
        return Say(spec, "runs, process " + std::to_string(status.dwProcessId));
    }
    return Say(spec, std::string("does not serve: ") + EndText(status), kExitFailed);
}

int StopService(const ServiceSpec& spec) {
    const ServiceHandle service = OpenOwnService(spec, SERVICE_STOP | SERVICE_QUERY_STATUS);
    SERVICE_STATUS asked{};
    SERVICE_STATUS_PROCESS status{};
    const KernelHandle process(
        service && QueryService(service.Get(), status) ? OpenProcess(SYNCHRONIZE, FALSE, status.dwProcessId) : nullptr);
    if (!service || !ControlService(service.Get(), SERVICE_CONTROL_STOP, &asked)) {
        const DWORD error = GetLastError();
        if (error == ERROR_SERVICE_NOT_ACTIVE) {
            return Say(spec, "does not run", kExitServiceNotRunning);
        }
        if (error != ERROR_SERVICE_CANNOT_ACCEPT_CTRL || status.dwCurrentState != SERVICE_STOP_PENDING) {
            return FailAtService(spec, "cannot stop the service", error);
        }
    }
    if (!WaitForService(service.Get(), SERVICE_STOP_PENDING, status)) {
        const DWORD error = GetLastError();
        FailAtService(spec, "the service does not end", error);
        return error == ERROR_SERVICE_REQUEST_TIMEOUT ? kExitTimedOut : kExitFailed;
    }
    // It has its files open until it has ended.
    if (process && WaitForSingleObject(process.Get(), kSilenceMilliseconds) != WAIT_OBJECT_0) {
        return Say(spec, "has stopped, but its process does not end", kExitTimedOut);
    }
    return Say(spec, "has stopped");
}

int ShowService(const ServiceSpec& spec) {
    const ServiceHandle service = OpenOwnService(spec, SERVICE_QUERY_STATUS | SERVICE_QUERY_CONFIG);
    SERVICE_STATUS_PROCESS status{};
    std::optional<ServiceConfiguration> configuration;
    if (!service || !QueryService(service.Get(), status) || !(configuration = QueryConfiguration(service.Get()))) {
        return FailAtService(spec, "cannot see the service", GetLastError());
    }
    const bool runs = status.dwCurrentState == SERVICE_RUNNING;
    std::string text = std::string("state:   ") + StateText(status.dwCurrentState) + "\n";
    if (status.dwProcessId != 0) {
        text += "process: " + std::to_string(status.dwProcessId) + "\n";
    }
    if (const std::string end = EndText(status); !runs && !end.empty()) {
        text += "ended:   " + end + "\n";
    }
    text += "account: " + WideToUtf8(configuration->account) + "\nprogram: " + WideToUtf8(configuration->commandLine) +
            "\n";
    PrintOut(text);
    return runs ? kExitOk : kExitServiceNotRunning;
}

}  // namespace wrb
