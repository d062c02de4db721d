#include "StopEvent.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <string>

#include "AccessList.h"
#include "AnySession.h"

namespace wrb {
namespace {

constexpr DWORD kPollMilliseconds = 50;

// Console handlers get no context and run on a system thread.
std::atomic<HANDLE> g_stopEvent = nullptr;
std::atomic<bool> g_ignoresEndOfSession = false;

BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (g_ignoresEndOfSession && (event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT)) {
        return TRUE;
    }
    SetEvent(g_stopEvent);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system ends the process when this returns: wait until the program has ended by itself, or until the
        // system's time limit.
        Sleep(INFINITE);
    }
    return TRUE;
}

KernelHandle OpenStopEvent(const wchar_t* name, DWORD access) {
    return OpenInAnySession(name, [access](const wchar_t* each) { return OpenEventW(access, FALSE, each); });
}

std::wstring TermsName(const wchar_t* name) {
    return std::wstring(name) + L"_Terms";
}

StopResult ResultOfOpen(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND ? StopResult::NotRunning : StopResult::Failed;
}

}  // namespace

void RequestStop() {
    if (const HANDLE event = g_stopEvent; event != nullptr) {
        SetEvent(event);
    }
}

void IgnoreEndOfSession() {
    g_ignoresEndOfSession = true;
}

StopEvent::~StopEvent() {
    if (m_event) {
        SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
        g_stopEvent = nullptr;
    }
}

bool StopEvent::Create(const wchar_t* name) {
    AccessList access;
    if (!access.Set({}, L"")) {
        return false;
    }
    KernelHandle event(CreateEventW(access.Attributes(), TRUE, FALSE, name));
    if (!event || GetLastError() == ERROR_ALREADY_EXISTS) {
        return false;
    }
    if (!m_terms.Create(TermsName(name).c_str())) {
        return false;
    }
    m_terms->processId = GetCurrentProcessId();
    m_event = std::move(event);
    g_stopEvent = m_event.Get();
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    return true;
}

void StopEvent::Wait() const {
    WaitForSingleObject(m_event.Get(), INFINITE);
}

std::chrono::milliseconds StopEvent::Limit(std::chrono::milliseconds otherwise) const {
    const uint32_t asked = m_terms->milliseconds;
    return asked == 0 ? otherwise : std::chrono::milliseconds(asked - std::min(asked / 10, 1'000u));
}

StopResult StopRunning(const wchar_t* name, std::optional<unsigned> seconds) {
    const ULONGLONG milliseconds = seconds.value_or(kStopSeconds) * 1'000ull;
    SharedBlock<StopTerms> terms;
    if (terms.Open(TermsName(name).c_str()) && seconds) {
        terms->milliseconds = static_cast<uint32_t>(milliseconds);
    }
    if (const KernelHandle event = OpenStopEvent(name, EVENT_MODIFY_STATE); !event || !SetEvent(event.Get())) {
        return ResultOfOpen(GetLastError());
    }
    // The event exists while the program runs: when the name is gone, the program has ended.
    const ULONGLONG start = GetTickCount64();
    while (OpenStopEvent(name, SYNCHRONIZE)) {
        if (GetTickCount64() - start >= milliseconds) {
            return StopResult::TimedOut;
        }
        Sleep(kPollMilliseconds);
    }
    if (const DWORD error = GetLastError(); error != ERROR_FILE_NOT_FOUND) {
        return StopResult::Failed;
    }
    return terms && terms->gaveUp != 0 ? StopResult::GaveUp : StopResult::Stopped;
}

uint32_t RunningProcess(const wchar_t* name) {
    SharedBlock<StopTerms> terms;
    return OpenStopEvent(name, SYNCHRONIZE) && terms.Open(TermsName(name).c_str()) ? terms->processId.load() : 0;
}

}  // namespace wrb
