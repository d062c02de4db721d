// The counters that the running host shows to another wrbhost.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "SharedBlock.h"

namespace wrb {

enum class HostCount : uint32_t {
    Handled,     // a handler ran
    Refused,     // no command that the library knows
    Threw,       // an exception came out of the library
    Dropped,     // messages that never came in whole, or that there was no memory for
    Waited,      // commands that waited for a worker
    TurnedAway,  // commands that found their lane full, or the host stopping
    Unanswered,  // of those, the ones whose sender could not be told
    NoMemory,    // of the dropped ones and of those that threw, the ones that an allocation failed for
    kCount
};

struct HostBoard {
    std::array<std::atomic<uint64_t>, static_cast<std::size_t>(HostCount::kCount)> counts{};

    void Count(HostCount what) { ++counts[static_cast<std::size_t>(what)]; }

    // "handled 4, refused 1, ...", in the order of the counters.
    std::string Text() const;
};

using SharedHostBoard = SharedBlock<HostBoard>;

}  // namespace wrb
