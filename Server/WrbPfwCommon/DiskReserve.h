// What packages leave free of a disk.
#pragma once

#include <algorithm>
#include <cstdint>

namespace wrb {

// Whether `bytes` more leave 40 MiB and two percent of the disk free: twice what the log service leaves, so that
// packages cannot stop the log. None are always allowed.
constexpr bool LeavesReserve(uint64_t bytes, uint64_t available, uint64_t total) noexcept {
    constexpr uint64_t kReserve = uint64_t{40} << 20;
    const uint64_t reserve = std::max(kReserve, total / 100 * 2);
    return bytes == 0 || (available >= reserve && bytes <= available - reserve);
}

}  // namespace wrb
