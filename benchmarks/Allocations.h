// Counts what a piece of code allocates: operator new of this program is replaced by one that counts per thread.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace wrb::bench {

uint64_t AllocationsOfThisThread() noexcept;

// Counts from construction to destruction; reports allocations per iteration as the counter "allocations".
class AllocationCounter {
  public:
    explicit AllocationCounter(benchmark::State& state) noexcept
        : m_state(state), m_before(AllocationsOfThisThread()) {}
    ~AllocationCounter() {
        m_state.counters["allocations"] = benchmark::Counter(static_cast<double>(AllocationsOfThisThread() - m_before),
                                                             benchmark::Counter::kAvgIterations);
    }
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

  private:
    benchmark::State& m_state;
    uint64_t m_before;
};

}  // namespace wrb::bench
