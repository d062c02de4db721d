// Keeps the thread's last error over work that must not disturb it.
#pragma once

#include <windows.h>

namespace wrb {

// Puts the last error back to what it was when the object was made.
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
