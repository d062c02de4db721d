#include "AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t t_allocations = 0;
thread_local std::size_t t_leastFailing = 0;

}  // namespace

std::size_t AllocationsOfThisThread() {
    return t_allocations;
}

void FailAllocationsOfThisThread(std::size_t leastBytes) {
    t_leastFailing = leastBytes;
}

// Alone in this file: where the compiler sees both and inlines one, it takes them for a mismatched pair.
void* operator new(std::size_t size) {
    ++t_allocations;
    const bool fails = t_leastFailing != 0 && size >= t_leastFailing;
    if (void* memory = fails ? nullptr : std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
