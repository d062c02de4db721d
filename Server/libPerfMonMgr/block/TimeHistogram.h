// Run times as counts in buckets of a log-linear scale: how many percent of the calls were faster than what.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace wrb {

// Times below 32 microseconds have a bucket each; each further power of two has 2^kTimeStepBits buckets of the same
// width. So a time is known to one part in sixteen, up to 71 minutes; longer ones count as that.
inline constexpr unsigned kTimeStepBits = 4;
inline constexpr std::size_t kTimeBuckets = (33 - kTimeStepBits) << kTimeStepBits;

std::size_t TimeBucketOf(uint64_t microseconds) noexcept;

// The longest time of the bucket, in microseconds.
uint64_t LongestInTimeBucket(std::size_t bucket) noexcept;

using TimeCounts = std::array<uint32_t, kTimeBuckets>;

uint64_t CountOf(const TimeCounts& counts) noexcept;

// The microseconds within which that part (0 to 1) of the calls was done; 0 when there were none.
uint64_t PercentileOf(const TimeCounts& counts, double part) noexcept;

// What was counted between `earlier` and `later`.
TimeCounts CountedSince(const TimeCounts& earlier, const TimeCounts& later) noexcept;

}  // namespace wrb
