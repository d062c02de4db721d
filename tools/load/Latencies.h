// How long commands took: a histogram of fixed size.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "TimeHistogram.h"

namespace wrb {

// With the buckets of TimeHistogram.h. Any thread.
class Latencies {
  public:
    void Add(uint64_t microseconds) noexcept;

    uint64_t Count() const noexcept { return m_count; }
    uint64_t Slowest() const noexcept { return m_slowest; }

    // The microseconds within which that part (0 to 1) of the commands was done; 0 when there were none.
    uint64_t Percentile(double part) const noexcept;

  private:
    std::array<std::atomic<uint32_t>, kTimeBuckets> m_buckets{};
    std::atomic<uint64_t> m_count{0};
    std::atomic<uint64_t> m_slowest{0};
};

}  // namespace wrb
