// How long commands took: a histogram of fixed size.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace wrb {

// Times up to 32 microseconds are kept whole, longer ones to one part in sixteen, all of them up to 71 minutes. Any
// thread.
class Latencies {
  public:
    void Add(uint64_t microseconds) noexcept;

    uint64_t Count() const noexcept { return m_count; }
    uint64_t Slowest() const noexcept { return m_slowest; }

    // The microseconds within which that part (0 to 1) of the commands was done; 0 when there were none.
    uint64_t Percentile(double part) const noexcept;

  private:
    static constexpr unsigned kStepBits = 4;  // steps in a power of two
    static constexpr std::size_t kBuckets = (33 - kStepBits) << kStepBits;

    static std::size_t BucketOf(uint64_t microseconds) noexcept;
    static uint64_t EndOf(std::size_t bucket) noexcept;

    std::array<std::atomic<uint64_t>, kBuckets> m_buckets{};
    std::atomic<uint64_t> m_count{0};
    std::atomic<uint64_t> m_slowest{0};
};

}  // namespace wrb
