// Keeps the thread's last error during work that may change it.
#pragma once

#include <windows.h>

namespace wrb {

// The destructor restores the last error that the constructor found.
class KeepLastError {
  public:
    KeepLastError() noexcept : m_error(GetLastError()) {}
    ~KeepLastError() { SetLastError(m_error); }
    KeepLastError(const KeepLastError&) = delete;
    KeepLastError& operator=(const KeepLastError&) = delete;

  private:
    DWORD m_error;
};

}  // namespace wrb
