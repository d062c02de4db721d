// Mutexes that processes share by name.
#pragma once

#include <windows.h>

#include "Handle.h"

namespace wrb {

// Creates the mutex for the server's accounts (ServerAccess.h). If that fails, opens an existing mutex with the two
// rights that a lock needs: its creator may grant no others. Empty on failure, with the cause in GetLastError.
KernelHandle OpenNamedMutex(const wchar_t* name) noexcept;

// Holds a mutex from construction to destruction. The mutex must outlive the lock; both belong to one thread.
//
// A mutex whose owner died can be locked like any other: the data must stay usable after an interrupted change.
class NamedMutexLock {
  public:
    // Waits at most `waitMilliseconds`. A null mutex is an error.
    NamedMutexLock(HANDLE mutex, DWORD waitMilliseconds) noexcept;
    ~NamedMutexLock();
    NamedMutexLock(const NamedMutexLock&) = delete;
    NamedMutexLock& operator=(const NamedMutexLock&) = delete;

    // Whether the mutex is held.
    explicit operator bool() const noexcept { return m_error == ERROR_SUCCESS; }

    // ERROR_SUCCESS, ERROR_TIMEOUT, or the cause of a wait that failed.
    DWORD Error() const noexcept { return m_error; }

  private:
    HANDLE m_mutex;
    DWORD m_error = ERROR_SUCCESS;
};

}  // namespace wrb
