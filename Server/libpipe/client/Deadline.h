// The end of a wait, by the monotonic clock.
#pragma once

#include <windows.h>

#include <cstdint>

namespace wrb {

class Deadline {
  public:
    explicit Deadline(uint32_t milliseconds) noexcept : m_end(GetTickCount64() + milliseconds) {}

    // Milliseconds, for a wait function; 0 once the deadline has passed. Keeps the last error.
    DWORD Remaining() const noexcept {
        const ULONGLONG now = GetTickCount64();
        return now < m_end ? static_cast<DWORD>(m_end - now) : 0;
    }

  private:
    ULONGLONG m_end;
};

}  // namespace wrb
