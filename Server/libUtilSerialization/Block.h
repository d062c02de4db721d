// A heap block of bytes that may change hands between a message and its carrier.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace wrb {

// The C allocator, because a message's block grows in place where the heap allows it. A block that is not owned, such
// as the view of a file, is left to its owner.
struct BlockFree {
    bool owned = true;

    void operator()(uint8_t* block) const noexcept {
        if (owned) {
            std::free(block);
        }
    }
};
using Block = std::unique_ptr<uint8_t, BlockFree>;

// Null when memory is exhausted. The bytes are not initialised.
inline Block AllocateBlock(uint32_t bytes) noexcept {
    return Block(static_cast<uint8_t*>(std::malloc(bytes == 0 ? 1 : bytes)));
}

}  // namespace wrb
