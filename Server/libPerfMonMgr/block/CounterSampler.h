// Takes the samples of the counter block, one an interval: what the console's charts of the last hour show.
#pragma once

#include <cstdint>

#include "Clock.h"
#include "CounterSection.h"

namespace wrb {

// Belongs to one thread, and to one process of the machine.
class CounterSampler {
  public:
    // Sums the first `slots` slots. The clock must outlive the sampler.
    explicit CounterSampler(uint32_t slots, const IClock& clock = SystemClock(),
                            const wchar_t* sectionName = kCounterSectionName)
        : m_slots(slots), m_clock(clock), m_sectionName(sectionName) {}

    // Ends an interval and begins the next. The first call begins one. While there is no block, each call looks for it.
    void Take() noexcept;

  private:
    struct Sums {
        uint32_t calls = 0;
        uint32_t failures = 0;
        TimeCounts times{};
        uint64_t microseconds = 0;
    };

    Sums Read() const noexcept;

    const uint32_t m_slots;
    const IClock& m_clock;
    const wchar_t* const m_sectionName;
    CounterView m_view;
    Sums m_last;
};

}  // namespace wrb
