// The memory that a pipe server reads into.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wrb {

// 512000 bytes, not cleared. A server is made for every request, and getting so large a block from the system and
// giving it back costs as much as a write to a pipe: a few blocks are kept for the next servers, up to one for each of
// as many threads. Objects belong to one thread at a time; the blocks that are kept are shared without a lock.
class ReceiveBuffer {
  public:
    static constexpr uint32_t kBytes = 512000;

    ReceiveBuffer() noexcept;
    ~ReceiveBuffer();
    ReceiveBuffer(const ReceiveBuffer&) = delete;
    ReceiveBuffer& operator=(const ReceiveBuffer&) = delete;

    // Null when memory is exhausted.
    uint8_t* Get() const noexcept { return m_bytes; }

  private:
    uint8_t* m_bytes;
};

}  // namespace wrb
