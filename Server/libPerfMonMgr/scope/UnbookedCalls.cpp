#include "UnbookedCalls.h"

#include <algorithm>
#include <utility>

#include "CounterUpdates.h"

namespace wrb {

void UnbookedCalls::Keep(uint32_t slot, uint32_t elapsed) noexcept {
    const ExclusiveGuard guard(m_lock);
    Sum& sum = m_sums[slot];
    ++sum.calls;
    sum.maximum = std::max(sum.maximum, elapsed);
    sum.total += elapsed;
    m_any.store(true, std::memory_order_relaxed);
}

void UnbookedCalls::Book(HandlerCounterBlock& block) noexcept {
    const ExclusiveGuard guard(m_lock);
    for (uint32_t slot = 0; slot < kCounterSlots; ++slot) {
        const Sum sum = std::exchange(m_sums[slot], {});
        if (sum.calls != 0) {
            BookTimes(block.slots[slot], sum.maximum, sum.total);
        }
        for (uint32_t call = 0; call < sum.calls; ++call) {
            ReleaseCounterReference(block);
        }
    }
    m_any.store(false, std::memory_order_relaxed);
}

}  // namespace wrb
