#include "TimeHistogram.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <numeric>

namespace wrb {

// The first 2^(kTimeStepBits + 1) buckets hold one number each. Each further power of two has 2^kTimeStepBits buckets,
// whose numbers differ in the bits below the highest kTimeStepBits + 1.
std::size_t TimeBucketOf(uint64_t microseconds) noexcept {
    const uint64_t time = std::min<uint64_t>(microseconds, UINT32_MAX);
    const auto bits = static_cast<unsigned>(std::bit_width(time));
    const unsigned shift = std::max(bits, kTimeStepBits + 1) - (kTimeStepBits + 1);
    return (static_cast<std::size_t>(shift) << kTimeStepBits) + static_cast<std::size_t>(time >> shift);
}

uint64_t LongestInTimeBucket(std::size_t bucket) noexcept {
    const std::size_t power = bucket >> kTimeStepBits;
    const std::size_t shift = power == 0 ? 0 : power - 1;
    const uint64_t start = bucket - (shift << kTimeStepBits);
    return ((start + 1) << shift) - 1;
}

uint64_t CountOf(const TimeCounts& counts) noexcept {
    return std::accumulate(counts.begin(), counts.end(), uint64_t{0});
}

uint64_t PercentileOf(const TimeCounts& counts, double part) noexcept {
    const auto wanted = static_cast<uint64_t>(std::ceil(part * static_cast<double>(CountOf(counts))));
    uint64_t seen = 0;
    for (std::size_t bucket = 0; bucket < counts.size(); ++bucket) {
        seen += counts[bucket];
        if (seen != 0 && seen >= wanted) {
            return LongestInTimeBucket(bucket);
        }
    }
    return 0;
}

TimeCounts CountedSince(const TimeCounts& earlier, const TimeCounts& later) noexcept {
    TimeCounts counts;
    std::ranges::transform(later, earlier, counts.begin(), std::minus());
    return counts;
}

}  // namespace wrb
