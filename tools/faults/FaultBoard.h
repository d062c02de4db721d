// The faults that are switched on, in a section that the back end makes when it was started with --allow-faults.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "FaultRule.h"
#include "SharedBlock.h"

namespace wrb {

inline constexpr wchar_t kFaultBoard[] = L"Calloway_Warrenby_BackEnd_Faults";

// Programs of one version share it.
class FaultBoard {
  public:
    struct Entry {
        FaultRule rule;
        uint32_t applied;
    };

    // Replaces the rule of that command. False: every place is taken. One program at a time.
    bool Set(const FaultRule& rule) noexcept;
    void Clear() noexcept;

    std::vector<Entry> Entries() const;

    // The fault of a request that has just come in, if it has one. A rule of the command comes before one of every
    // command. Any thread.
    std::optional<FaultRule> Take(DbCommand command) noexcept;

  private:
    struct Place {
        std::atomic<uint32_t> kind{0};  // FaultKind; written last
        std::atomic<uint32_t> command{0};
        std::atomic<uint32_t> milliseconds{0};
        std::atomic<uint32_t> every{0};
        std::atomic<uint32_t> seen{0};
        std::atomic<uint32_t> applied{0};

        FaultRule Rule() const noexcept;
    };

    Place* Find(uint32_t command, bool orFree) noexcept;

    std::array<Place, 16> m_places;
};

using SharedFaultBoard = SharedBlock<FaultBoard>;

}  // namespace wrb
