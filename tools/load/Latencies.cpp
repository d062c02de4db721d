#include "Latencies.h"

#include <algorithm>

namespace wrb {

void Latencies::Add(uint64_t microseconds) noexcept {
    ++m_buckets[TimeBucketOf(microseconds)];
    ++m_count;
    uint64_t slowest = m_slowest;
    while (slowest < microseconds && !m_slowest.compare_exchange_weak(slowest, microseconds)) {
    }
}

uint64_t Latencies::Percentile(double part) const noexcept {
    TimeCounts counts;
    std::ranges::copy(m_buckets, counts.begin());
    return std::min(PercentileOf(counts, part), Slowest());
}

}  // namespace wrb
