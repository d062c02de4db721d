// Counts heap allocations and makes them fail: a test that links test_allocation_count runs with its operator new.
#pragma once

#include <cstddef>

// How often the calling thread has allocated so far.
std::size_t AllocationsOfThisThread();

// From now on, allocations of `leastBytes` or more fail on the calling thread. 0: none fails.
void FailAllocationsOfThisThread(std::size_t leastBytes);

// While it exists, the `nth` allocation (from 1) on any thread but its own throws std::bad_alloc. One at a time.
class FailedAllocation {
  public:
    explicit FailedAllocation(std::size_t nth);
    ~FailedAllocation();
    FailedAllocation(const FailedAllocation&) = delete;
    FailedAllocation& operator=(const FailedAllocation&) = delete;

    bool Happened() const;
};
