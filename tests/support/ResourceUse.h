// How much a process holds, for tests that repeat something and expect it to stay the same.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wrb::test {

struct ResourceUse {
    uint32_t handles;            // open handles of the kernel
    std::size_t committedBytes;  // private memory
};

// Of the process with that handle, which must be good for queries; null: this one.
ResourceUse CurrentResourceUse(void* process = nullptr);

}  // namespace wrb::test
