#include "ServiceProcess.h"

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "Console.h"
#include "ExitCode.h"
#include "HomeFolder.h"
#include "StopEvent.h"
#include "SystemText.h"

namespace wrb {
namespace {

constexpr std::chrono::seconds kSignOfLife{1};
constexpr DWORD kWaitHintMilliseconds = 10'000;

// What the manager knows of this process. Any thread.
class ServiceState {
  public:
    void Start(SERVICE_STATUS_HANDLE handle) {
        m_handle = handle;
        Report(SERVICE_START_PENDING);
        std::thread([this] { GiveSigns(); }).detach();
    }

    void Report(DWORD state) {
        {
            const std::lock_guard guard(m_lock);
            if (m_state == SERVICE_STOPPED || (m_state == SERVICE_STOP_PENDING && state == SERVICE_RUNNING)) {
                return;
            }
            m_state = state;
            m_checkPoint = 0;
            Send();
        }
        m_changed.notify_all();
    }

    void SetFault(StartFault fault) {
        const std::lock_guard guard(m_lock);
        m_fault = fault;
    }

  private:
    bool IsPending() const { return m_state == SERVICE_START_PENDING || m_state == SERVICE_STOP_PENDING; }

    // With the lock.
    void Send() {
        SERVICE_STATUS status{};
        status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
        status.dwCurrentState = m_state;
        if (m_state == SERVICE_RUNNING) {
            status.dwControlsAccepted = SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_PRESHUTDOWN;
        }
        if (IsPending()) {
            status.dwCheckPoint = ++m_checkPoint;
            status.dwWaitHint = kWaitHintMilliseconds;
        }
        if (m_fault != StartFault::None) {
            status.dwWin32ExitCode = ERROR_SERVICE_SPECIFIC_ERROR;
            status.dwServiceSpecificExitCode = static_cast<DWORD>(m_fault);
        }
        SetServiceStatus(m_handle, &status);
    }

    void GiveSigns() {
        std::unique_lock lock(m_lock);
        while (!m_changed.wait_for(lock, kSignOfLife, [this] { return m_state == SERVICE_STOPPED; })) {
            if (IsPending()) {
                Send();
            }
        }
    }

    SERVICE_STATUS_HANDLE m_handle = nullptr;
    std::mutex m_lock;
    std::condition_variable m_changed;
    DWORD m_state = SERVICE_START_PENDING;
    DWORD m_checkPoint = 0;
    StartFault m_fault = StartFault::None;
};

// The functions of the manager get no context. Never destroyed: the manager says that the service has ended while its
// threads still run.
struct Service {
    Service(const ServiceSpec& description, std::function<int()> main) : spec(description), serve(std::move(main)) {}

    const ServiceSpec& spec;
    const std::function<int()> serve;
    ServiceState state;
    std::atomic<int> exitCode{kExitFailed};
};
Service* g_service = nullptr;

DWORD WINAPI OnControl(DWORD control, DWORD, void*, void*) {
    switch (control) {
        case SERVICE_CONTROL_STOP:
        case SERVICE_CONTROL_PRESHUTDOWN:
            g_service->state.Report(SERVICE_STOP_PENDING);
            RequestStop();
            return NO_ERROR;
        case SERVICE_CONTROL_INTERROGATE:
            return NO_ERROR;
        default:
            return ERROR_CALL_NOT_IMPLEMENTED;
    }
}

void WINAPI ServiceMain(DWORD, wchar_t**) {
    const SERVICE_STATUS_HANDLE handle = RegisterServiceCtrlHandlerExW(g_service->spec.name, OnControl, nullptr);
    if (handle == nullptr) {
        return;
    }
    g_service->state.Start(handle);
    SetCurrentDirectoryW(HomeFolder().c_str());
    g_service->exitCode = g_service->serve();
    g_service->state.Report(SERVICE_STOPPED);
}

}  // namespace

int RunAsService(const ServiceSpec& spec, const std::function<int()>& serve) {
    g_service = new Service(spec, serve);
    IgnoreEndOfSession();
    std::wstring name = spec.name;
    const SERVICE_TABLE_ENTRYW table[] = {{name.data(), ServiceMain}, {nullptr, nullptr}};
    const BOOL ran = StartServiceCtrlDispatcherW(table);
    const DWORD error = GetLastError();
    if (!ran) {
        PrintErr(std::string(spec.program) + ": only the service manager can run the service: " + SystemText(error) +
                 "\n");
    }
    return g_service->exitCode;
}

bool RunsAsService() {
    return g_service != nullptr;
}

void ReportRunning() {
    if (g_service != nullptr) {
        g_service->state.Report(SERVICE_RUNNING);
    }
}

void ReportStopping() {
    if (g_service != nullptr) {
        g_service->state.Report(SERVICE_STOP_PENDING);
    }
}

void ReportFault(StartFault fault) {
    if (g_service != nullptr) {
        g_service->state.SetFault(fault);
    }
}

void ReportStopped() {
    if (g_service != nullptr) {
        g_service->state.Report(SERVICE_STOPPED);
    }
}

}  // namespace wrb
