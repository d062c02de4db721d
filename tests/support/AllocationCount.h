// Counts heap allocations and makes them fail: a test that links test_allocation_count runs with its operator new.
#pragma once

#include <cstddef>

// How often the calling thread has allocated so far.
std::size_t AllocationsOfThisThread();

// From now on the calling thread gets no block of so many bytes or more; 0: it gets all.
void FailAllocationsOfThisThread(std::size_t leastBytes);
