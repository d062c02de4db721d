// Mutexes that processes share by name.
#pragma once

#include <windows.h>

#include "Handle.h"

namespace wrb {

// Creates the mutex for the server's accounts (ServerAccess.h), or opens the one that is there: a mutex of another
// program need not grant all the rights that creating asks for. Empty on failure, with the cause in GetLastError.
KernelHandle OpenNamedMutex(const wchar_t* name) noexcept;

// Holds a mutex from construction to destruction. The mutex must outlive the lock; both belong to one thread.
//
// A mutex whose owner died is held all the same: what it guards must stay usable after any interrupted change.
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
