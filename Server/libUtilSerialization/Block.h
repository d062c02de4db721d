// A heap block of bytes that may change hands between a message and its carrier.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace wrb {

// The C allocator, because a message's block grows in place where the heap allows it.
struct CBlockFree {
    void operator()(uint8_t* block) const noexcept { std::free(block); }
};
using CBlock = std::unique_ptr<uint8_t, CBlockFree>;

// Null when memory is exhausted. The bytes are not initialised.
inline CBlock AllocateBlock(uint32_t bytes) noexcept {
    return CBlock(static_cast<uint8_t*>(std::malloc(bytes == 0 ? 1 : bytes)));
}

}  // namespace wrb
