// The memory that a pipe server reads into.
#pragma once

#include <cstdint>

#include "Handle.h"

namespace wrb {

struct ReceiveBlockTraits {
    using Type = uint8_t*;
    static uint8_t* Empty() noexcept { return nullptr; }
    static void Close(uint8_t* block) noexcept { delete[] block; }
};

// 512000 bytes, not cleared. Getting so large a block from the system and giving it back costs as much as a write to a
// pipe, so a few are kept for the next servers. An object belongs to one thread at a time.
class ReceiveBuffer {
  public:
    static constexpr uint32_t kBytes = 512000;

    ReceiveBuffer() noexcept;
    ~ReceiveBuffer();
    ReceiveBuffer(const ReceiveBuffer&) = delete;
    ReceiveBuffer& operator=(const ReceiveBuffer&) = delete;

    // Null when memory is exhausted.
    uint8_t* Get() const noexcept { return m_block.Get(); }

  private:
    UniqueHandle<ReceiveBlockTraits> m_block;
};

}  // namespace wrb
