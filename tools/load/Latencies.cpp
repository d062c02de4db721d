#include "Latencies.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace wrb {

// The first 2^(kStepBits + 1) buckets hold one number each. Each further power of two has 2^kStepBits buckets, whose
// numbers differ in the bits below the highest kStepBits + 1.
std::size_t Latencies::BucketOf(uint64_t microseconds) noexcept {
    const uint64_t time = std::min<uint64_t>(microseconds, UINT32_MAX);
    const auto bits = static_cast<unsigned>(std::bit_width(time));
    const unsigned shift = std::max(bits, kStepBits + 1) - (kStepBits + 1);
    return (static_cast<std::size_t>(shift) << kStepBits) + static_cast<std::size_t>(time >> shift);
}

// The largest number in the bucket.
uint64_t Latencies::EndOf(std::size_t bucket) noexcept {
    const std::size_t power = bucket >> kStepBits;
    const std::size_t shift = power == 0 ? 0 : power - 1;
    const uint64_t start = bucket - (shift << kStepBits);
    return ((start + 1) << shift) - 1;
}

void Latencies::Add(uint64_t microseconds) noexcept {
    ++m_buckets[BucketOf(microseconds)];
    ++m_count;
    uint64_t slowest = m_slowest;
    while (slowest < microseconds && !m_slowest.compare_exchange_weak(slowest, microseconds)) {
    }
}

uint64_t Latencies::Percentile(double part) const noexcept {
    const auto wanted = static_cast<uint64_t>(std::ceil(part * static_cast<double>(m_count)));
    uint64_t seen = 0;
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
        seen += m_buckets[bucket];
        if (seen != 0 && seen >= wanted) {
            return std::min(EndOf(bucket), Slowest());
        }
    }
    return Slowest();
}

}  // namespace wrb
