#include "CounterScope.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "CounterSection.h"
#include "ManualClock.h"
#include "OSException.h"
#include "PerfMonMgr.h"

namespace {

class CounterScope : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(CWrbyPerfMonMgr::Initialize());
        wrb::ResetAllCounters();
        uint32_t error = 0;
        ASSERT_EQ(reader.Attach(error), wrb::CounterAttach::Attached);
    }
    void TearDown() override { CWrbyPerfMonMgr::CloseSingleton(); }

    CManualClock clock;
    wrb::CCounterReader reader;
};

TEST_F(CounterScope, ACallIsCountedAtItsStartAndTimedAtItsEnd) {
    constexpr uint32_t kSlot = 5;
    {
        const wrb::CCounterCall first(kSlot, clock);
        EXPECT_EQ(reader.Slot(kSlot).calls, 1u);
        EXPECT_EQ(reader.CallsInProgress(), 1);
        clock.AdvanceTick(30);
        EXPECT_EQ(reader.Slot(kSlot).total, 0u);
    }
    {
        const wrb::CCounterCall second(kSlot, clock);
        clock.AdvanceTick(11);
    }
    const HandlerCounterSlot slot = reader.Slot(kSlot);
    EXPECT_EQ(slot.calls, 2u);
    EXPECT_EQ(slot.maximum, 30u);
    EXPECT_EQ(slot.total, 41u);
    EXPECT_EQ(slot.average, 20u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
    wrb::ResetAllCounters();
    EXPECT_EQ(reader.Slot(kSlot).calls, 0u);
    EXPECT_EQ(reader.Slot(kSlot).total, 0u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, AnExceptionInAHandlerEndsTheCallToo) {
    EXPECT_THROW(
        {
            const wrb::CCounterCall call(5, clock);
            clock.AdvanceTick(4);
            throw std::runtime_error("handler");
        },
        std::runtime_error);
    EXPECT_EQ(reader.Slot(5).total, 4u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, TheTickCounterMayWrapDuringACall) {
    CManualClock late(0xFFFFFFF0);
    {
        const wrb::CCounterCall call(5, late);
        late.AdvanceTick(0x20);
    }
    EXPECT_EQ(reader.Slot(5).maximum, 0x20u);
}

TEST_F(CounterScope, WithoutABlockOrASlotACallGoesUncounted) {
    { const wrb::CCounterCall call(wrb::kCounterSlots, clock); }
    EXPECT_EQ(CWrbyPerfMonMgr::GetInstance()->GetCounterInstance(2), nullptr);
    EXPECT_EQ(reader.CallsInProgress(), 0);

    CWrbyPerfMonMgr::GetInstance()->UnInitialize();
    EXPECT_EQ(CWrbyPerfMonMgr::GetInstance()->GetCounterInstance(1), nullptr);
    EXPECT_EQ(CWrbyPerfMonMgr::GetInstance()->GetMutex(), nullptr);
    { const wrb::CCounterCall call(5, clock); }
    wrb::ResetAllCounters();
    EXPECT_EQ(reader.Slot(5).calls, 0u);
}

TEST_F(CounterScope, WithoutAManagerACallRaisesTheGeneralFailure) {
    CWrbyPerfMonMgr::CloseSingleton();
    EXPECT_EQ(CWrbyPerfMonMgr::GetInstance(), nullptr);
    try {
        const wrb::CCounterCall call(5, clock);
        ADD_FAILURE() << "no exception";
    } catch (const OS::CException& failure) {
        EXPECT_EQ(failure.GetCode(), 0x80004005u);
    }
    EXPECT_THROW(wrb::ResetAllCounters(), OS::CException);

    ASSERT_TRUE(CWrbyPerfMonMgr::Initialize());
    { const wrb::CCounterCall call(5, clock); }
    EXPECT_EQ(reader.Slot(5).calls, 1u) << "attached to the block that the reader kept alive";
}

TEST_F(CounterScope, ThreadsLoseNoCall) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int call = 0; call < 200; ++call) {
                const wrb::CCounterCall counted(5);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(reader.Slot(5).calls, 1600u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, TwoProcessesShareTheCounters) {
    const wrb::test::CChildProcess child(L"perf_counter_child.exe", {L"300"});
    for (int i = 0; i < 300; ++i) {
        const wrb::CCounterCall call(7);
    }
    ASSERT_EQ(child.WaitForExit(), 0u) << child.Output();
    EXPECT_EQ(reader.Slot(7).calls, 600u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, TheMutexOfAProcessThatDiedCountsAsTaken) {
    {
        const wrb::test::CChildProcess child(L"perf_counter_child.exe", {L"hold"});
        ASSERT_TRUE(child.WaitForOutput("holding"));
    }  // ended while it owns the mutex
    {
        const wrb::CCounterCall call(5, clock);
        clock.AdvanceTick(6);
    }
    EXPECT_EQ(reader.Slot(5).total, 6u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

}  // namespace
