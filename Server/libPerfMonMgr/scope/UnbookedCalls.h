// The calls of this process that ended while another process held the counters' mutex.
#pragma once

#include <atomic>
#include <cstdint>

#include "HandlerCounterBlock.h"
#include "SRWLock.h"

namespace wrb {

// What is kept is one sum a slot, however many calls there are. Any thread.
class UnbookedCalls {
  public:
    // Whether calls wait to be booked, without the lock.
    bool Any() const noexcept { return m_any.load(std::memory_order_relaxed); }

    void Keep(uint32_t slot, uint32_t elapsed) noexcept;

    // Books all of them and releases their references. The caller holds the block's mutex.
    void Book(HandlerCounterBlock& block) noexcept;

  private:
    struct Sum {
        uint32_t calls;
        uint32_t maximum;
        uint64_t total;
    };

    CWrbSRWLock m_lock;
    Sum m_sums[kCounterSlots] WRB_GUARDED_BY(m_lock) = {};
    std::atomic<bool> m_any{false};
};

}  // namespace wrb
