// Counts losses and says when to report them.
#pragma once

#include <cstdint>

#include "Clock.h"
#include "SRWLock.h"

namespace wrb {

// The first loss is reported at once, the following ones as sums, one a minute. Any thread.
class LossCount {
  public:
    explicit LossCount(const IClock& clock = SystemClock()) : m_clock(clock) {}

    // Counts one. Returns the losses to report now: those since the last report, or 0 within a minute of it.
    uint64_t Add();

    // The losses that have not been reported; they count as reported now.
    uint64_t Rest();

  private:
    const IClock& m_clock;
    CWrbSRWLock m_lock;
    uint64_t m_untold WRB_GUARDED_BY(m_lock) = 0;
    bool m_told WRB_GUARDED_BY(m_lock) = false;  // and so the next is valid
    uint32_t m_when WRB_GUARDED_BY(m_lock) = 0;  // on the tick clock
};

}  // namespace wrb
