#include "AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "Compiler.h"

namespace {

WRB_THREAD_LOCAL std::size_t t_allocations = 0;
WRB_THREAD_LOCAL std::size_t t_leastFailing = 0;
WRB_THREAD_LOCAL bool t_spared = false;
std::atomic<long long> g_untilFailure = -1;  // 0: it has happened; negative: none is due

bool Fails(std::size_t size) {
    const bool isNth = !t_spared && g_untilFailure > 0 && --g_untilFailure == 0;
    return isNth || (t_leastFailing != 0 && size >= t_leastFailing);
}

}  // namespace

std::size_t AllocationsOfThisThread() {
    return t_allocations;
}

void FailAllocationsOfThisThread(std::size_t leastBytes) {
    t_leastFailing = leastBytes;
}

FailedAllocation::FailedAllocation(std::size_t nth) {
    t_spared = true;
    g_untilFailure = static_cast<long long>(nth);
}

FailedAllocation::~FailedAllocation() {
    g_untilFailure = -1;
    t_spared = false;
}

bool FailedAllocation::Happened() const {
    return g_untilFailure <= 0;
}

// In a file of their own: where the compiler inlines only one of them, it warns of a mismatched pair.
void* operator new(std::size_t size) {
    ++t_allocations;
    if (void* memory = Fails(size) ? nullptr : std::malloc(size != 0 ? size : 1)) {
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
