// Ends calls of the system that have no time-out of their own.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "Handle.h"

namespace wrb {

// While it exists, calls that still wait when the time is up fail with ERROR_OPERATION_ABORTED (995), and so do those
// that begin to wait later. One of two kinds of calls:
//  - those of this thread that have no OVERLAPPED block: opening, reading and changing a file, which a process with an
//    oplock on the file can hold up for ever;
//  - those of any thread on one pipe.
// A timer of the system's thread pool ends them. Made and destroyed by the same thread. Keeps the last error.
class CancelAfter {
  public:
    explicit CancelAfter(uint32_t milliseconds) noexcept;
    CancelAfter(HANDLE pipe, uint32_t milliseconds) noexcept;
    ~CancelAfter();  // nothing is ended afterwards
    CancelAfter(const CancelAfter&) = delete;
    CancelAfter& operator=(const CancelAfter&) = delete;

    // False when the system lacks memory for the timer: nothing will be ended, and Error tells the cause.
    explicit operator bool() const noexcept { return m_timer != nullptr; }
    DWORD Error() const noexcept { return m_error; }

    // Whether the time is up.
    bool IsOver() const noexcept { return m_isOver; }

  private:
    static void CALLBACK Cancel(PTP_CALLBACK_INSTANCE, void* self, PTP_TIMER);
    void Start(uint32_t milliseconds) noexcept;

    KernelHandle m_thread;
    HANDLE m_pipe = nullptr;
    PTP_TIMER m_timer = nullptr;
    DWORD m_error = ERROR_SUCCESS;
    std::atomic<bool> m_isOver{false};
};

}  // namespace wrb
