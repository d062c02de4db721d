// Counts heap allocations: a test that links test_allocation_count runs with its operator new.
#pragma once

#include <cstddef>

// How often the calling thread has allocated so far.
std::size_t AllocationsOfThisThread();
