// Keeps the thread's last error over work that must not disturb it.
#pragma once

#include <windows.h>

namespace wrb {

// Puts the last error back to what it was when the object was made.
class CKeepLastError {
  public:
    CKeepLastError() noexcept : m_error(GetLastError()) {}
    ~CKeepLastError() { SetLastError(m_error); }
    CKeepLastError(const CKeepLastError&) = delete;
    CKeepLastError& operator=(const CKeepLastError&) = delete;

  private:
    DWORD m_error;
};

}  // namespace wrb
