#include "CounterUpdates.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

TEST(CounterUpdates, BookTheTimesOfASlot) {
    constexpr struct {
        uint32_t elapsed;
        uint32_t maximum;
        uint64_t total;
        uint32_t average;
    } kCalls[] = {{0, 0, 0, 0}, {10, 10, 10, 5}, {3, 10, 13, 4}, {0xFFFFFFFF, 0xFFFFFFFF, 0x10000000C, 0x40000003}};
    HandlerCounterSlot slot = {};
    uint32_t calls = 0;
    for (const auto& call : kCalls) {
        wrb::CountCall(slot);
        wrb::BookCallTime(slot, call.elapsed);
        EXPECT_EQ(slot.calls, ++calls);
        EXPECT_EQ(slot.maximum, call.maximum);
        EXPECT_EQ(slot.total, call.total);
        EXPECT_EQ(slot.average, call.average);
    }
}

TEST(CounterUpdates, ACallThatOutlivesAResetIsTimedWithoutBeingCounted) {
    auto block = std::make_unique<HandlerCounterBlock>();
    wrb::CountCall(block->slots[5]);
    wrb::ZeroCounters(*block);
    wrb::BookCallTime(block->slots[5], 9);
    EXPECT_EQ(block->slots[5].calls, 0u);
    EXPECT_EQ(block->slots[5].average, 0u);
    EXPECT_EQ(block->slots[5].total, 9u);
}

// References come without the mutex and go with it: the flag must never end up clear while one is held.
TEST(CounterUpdates, TheFlagIsSetWheneverAReferenceIsHeld) {
    auto block = std::make_unique<HandlerCounterBlock>();
    std::atomic_flag mutex;  // spins, so that the threads meet as often as they can
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 300000; ++round) {
                wrb::AddCounterReference(*block);
                while (mutex.test_and_set(std::memory_order_acquire)) {
                }
                // Under the mutex nobody is between clearing the flag and looking at the count again.
                wrong += block->inUse != 1;
                wrb::ReleaseCounterReference(*block);
                mutex.clear(std::memory_order_release);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(block->referenceCount, 0);
    EXPECT_EQ(block->inUse, 0);
}

}  // namespace
