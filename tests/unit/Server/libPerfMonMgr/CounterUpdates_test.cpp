#include "CounterUpdates.h"

#include <gtest/gtest.h>

#include <memory>

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

TEST(CounterUpdates, TheFlagIsSetWhileAReferenceIsHeld) {
    auto block = std::make_unique<HandlerCounterBlock>();
    for (const int32_t held : {1, 2, 3}) {
        wrb::AddCounterReference(*block);
        EXPECT_EQ(block->referenceCount, held);
        EXPECT_EQ(block->inUse, 1);
    }
    for (const int32_t held : {2, 1, 0}) {
        wrb::ReleaseCounterReference(*block);
        EXPECT_EQ(block->referenceCount, held);
        EXPECT_EQ(block->inUse, held > 0 ? 1 : 0);
    }
}

}  // namespace
