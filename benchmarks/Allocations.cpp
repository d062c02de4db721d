#include "Allocations.h"

#include <cstdlib>
#include <new>

#include "Compiler.h"

namespace wrb::bench {
namespace {

WRB_THREAD_LOCAL uint64_t allocations = 0;

void* Allocate(std::size_t size) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

uint64_t AllocationsOfThisThread() noexcept {
    return allocations;
}

void* CountedNew(std::size_t size) {
    if (void* const memory = Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* CountedNewNothrow(std::size_t size) noexcept {
    return Allocate(size);
}

}  // namespace wrb::bench

void* operator new(std::size_t size) {
    return wrb::bench::CountedNew(size);
}
void* operator new[](std::size_t size) {
    return wrb::bench::CountedNew(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return wrb::bench::CountedNewNothrow(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return wrb::bench::CountedNewNothrow(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
