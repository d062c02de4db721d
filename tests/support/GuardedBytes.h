// Bytes at the end of readable memory, so that a reader that goes one byte too far crashes.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace wrb::test {

// A copy of `count` bytes. Behind the last one comes a page that may not be touched.
class GuardedBytes {
  public:
    GuardedBytes(const void* bytes, std::size_t count) {
        const std::size_t room = (count / kPage + 1) * kPage;
        m_pages = static_cast<uint8_t*>(VirtualAlloc(nullptr, room + kPage, MEM_RESERVE, PAGE_NOACCESS));
        VirtualAlloc(m_pages, room, MEM_COMMIT, PAGE_READWRITE);
        m_start = m_pages + room - count;
        std::copy_n(static_cast<const uint8_t*>(bytes), count, m_start);
    }
    ~GuardedBytes() { VirtualFree(m_pages, 0, MEM_RELEASE); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    uint8_t* Start() const { return m_start; }

  private:
    static constexpr std::size_t kPage = 4096;
    uint8_t* m_pages;
    uint8_t* m_start;
};

}  // namespace wrb::test
