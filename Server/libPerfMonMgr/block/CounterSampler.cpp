#include "CounterSampler.h"

#include <algorithm>
#include <functional>

#include "CounterUpdates.h"

namespace wrb {

CounterSampler::Sums CounterSampler::Read() const noexcept {
    const HandlerCounterBlock& block = *m_view.Block();
    Sums sums;
    sums.microseconds = m_clock.MonotonicMicroseconds();
    for (uint32_t slot = 0; slot < m_slots; ++slot) {
        const HandlerCounterSlot counters = ReadCounters(block.slots[slot]);
        sums.calls += counters.calls;
        sums.failures += counters.failures;
        std::ranges::transform(sums.times, ReadTimes(block.times[slot]), sums.times.begin(), std::plus());
    }
    return sums;
}

void CounterSampler::Take() noexcept {
    if (m_view.Block() == nullptr) {
        uint32_t error = 0;
        if (m_view.Attach(FILE_MAP_READ | FILE_MAP_WRITE, error, m_sectionName) == CounterAttach::Attached) {
            m_last = Read();
        }
        return;
    }
    const Sums now = Read();
    if (now.calls < m_last.calls) {  // another process has set the counters to zero
        m_last = {.microseconds = m_last.microseconds};
    }
    const TimeCounts times = CountedSince(m_last.times, now.times);
    const auto percentile = [&](double part) { return static_cast<uint32_t>(PercentileOf(times, part)); };
    AddSample(*m_view.Block(), {.second = m_clock.CalendarSeconds(),
                                .milliseconds = static_cast<uint32_t>((now.microseconds - m_last.microseconds) / 1000),
                                .calls = now.calls - m_last.calls,
                                .failures = now.failures - m_last.failures,
                                .p50 = percentile(0.50),
                                .p95 = percentile(0.95),
                                .p99 = percentile(0.99)});
    m_last = now;
}

}  // namespace wrb
