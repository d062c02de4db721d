#include "CancelAfter.h"

#include "LastError.h"

namespace wrb {

CancelAfter::CancelAfter(uint32_t milliseconds) noexcept {
    const KeepLastError keep;
    m_thread.Reset(OpenThread(THREAD_TERMINATE, FALSE, GetCurrentThreadId()));
    if (m_thread) {
        Start(milliseconds);
    } else {
        m_error = GetLastError();
    }
}

CancelAfter::CancelAfter(HANDLE pipe, uint32_t milliseconds) noexcept : m_pipe(pipe) {
    const KeepLastError keep;
    Start(milliseconds);
}

CancelAfter::~CancelAfter() {
    if (m_timer != nullptr) {
        const KeepLastError keep;
        SetThreadpoolTimer(m_timer, nullptr, 0, 0);
        WaitForThreadpoolTimerCallbacks(m_timer, TRUE);
        CloseThreadpoolTimer(m_timer);
    }
}

void CancelAfter::Start(uint32_t milliseconds) noexcept {
    m_timer = CreateThreadpoolTimer(Cancel, this, nullptr);
    if (m_timer == nullptr) {
        m_error = GetLastError();
        return;
    }
    constexpr DWORD kAgainMilliseconds = 100;  // a call may begin to wait just after the first time
    ULARGE_INTEGER due;
    due.QuadPart = 0 - ULONGLONG{milliseconds} * 10'000;  // negative: from now, in units of 100 ns
    FILETIME time = {due.LowPart, due.HighPart};
    SetThreadpoolTimer(m_timer, &time, kAgainMilliseconds, 0);
}

void CancelAfter::Cancel(PTP_CALLBACK_INSTANCE, void* self, PTP_TIMER) {
    auto& limit = *static_cast<CancelAfter*>(self);
    limit.m_isOver = true;
    if (limit.m_thread) {
        CancelSynchronousIo(limit.m_thread.Get());
    } else {
        CancelIoEx(limit.m_pipe, nullptr);
    }
}

}  // namespace wrb
