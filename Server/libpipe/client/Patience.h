// A bound on how many calls wait long for their peers at the same time.
#pragma once

#include <algorithm>
#include <atomic>

#include "Deadline.h"

namespace wrb {

// The places of those that wait long. Any thread; nothing waits or allocates.
class LongWaits {
  public:
    // False when `most` have a place.
    bool Enter(unsigned most) noexcept {
        unsigned inside = m_inside.load(std::memory_order_relaxed);
        while (inside < most) {
            if (m_inside.compare_exchange_weak(inside, inside + 1, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }
    void Leave() noexcept { m_inside.fetch_sub(1, std::memory_order_relaxed); }

  private:
    std::atomic<unsigned> m_inside{0};
};

// What one call waits: half a second, and longer only with a place, which it then keeps. One thread.
class Patience {
  public:
    // `most` is asked once, when the half second is over; it must not throw.
    Patience(LongWaits& waits, unsigned (*most)()) noexcept : m_waits(waits), m_most(most) {}
    ~Patience() {
        if (m_isLong) {
            m_waits.Leave();
        }
    }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

    // How much of `milliseconds` the next wait may take; 0: the call gives up.
    DWORD Allow(DWORD milliseconds) noexcept {
        if (const DWORD brief = m_brief.Remaining(); brief != 0) {
            return std::min(brief, milliseconds);
        }
        m_isLong = m_isLong || (milliseconds != 0 && m_waits.Enter(m_most()));
        return m_isLong ? milliseconds : 0;
    }

  private:
    static constexpr uint32_t kBriefMilliseconds = 500;

    LongWaits& m_waits;
    unsigned (*m_most)();
    const Deadline m_brief{kBriefMilliseconds};
    bool m_isLong = false;
};

}  // namespace wrb
