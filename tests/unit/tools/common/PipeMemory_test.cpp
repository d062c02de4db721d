// What a listener does when there is no memory, and when calls of the system fail.
#include <gmock/gmock.h>

#include "AllocationCount.h"
#include "FailedCalls.h"
#include "FakePipeService.h"
#include "MemoryBudget.h"
#include "OnThreads.h"
#include "PipeListener.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

using testing::ElementsAre;

const std::string kLong(60'000, 'x');
const std::string kMiddle(30'000, 'y');

struct PipeMemory : testing::Test {
    PipeMemory() {
        options.name = UniqueName();
        options.instances = 4;
        options.readTimeoutMilliseconds = options.drainMilliseconds = 20'000;
        options.memoryBudget = 40'000;  // less than one long message
    }
    bool Send(std::string_view bytes) const { return WritePiece(OpenPipeForWriting(options.name), bytes); }

    PipeListenerOptions options;
    std::vector<std::size_t> sizes;  // of the messages; on the reading thread
};

TEST(MemoryBudget, AMessageGrowsWhileTheOthersAreWithinTheBudget) {
    unsigned calls = 0;
    MemoryBudget budget(100, [&calls] { ++calls; });
    MemoryShare first(budget);
    MemoryShare second(budget);
    EXPECT_TRUE(first.Grow(90) && second.Grow(50) && second.Grow(51)) << "the others hold 90";
    EXPECT_FALSE(first.Grow(1)) << "the others hold 101";
    EXPECT_TRUE(second.Grow(1)) << "one can always grow";
    EXPECT_FALSE(first.Grow(1));
    EXPECT_EQ(budget.Used(), 192u);
    EXPECT_EQ(calls, 0u);
    MemoryShare taken(std::move(second));
    second.Release();
    EXPECT_EQ(budget.Used(), 192u);
    taken.Release();
    EXPECT_EQ(calls, 1u);
    EXPECT_TRUE(first.Grow(1));
}

TEST_F(PipeMemory, LongMessagesWaitUnreadAndShortOnesPass) {
    const auto note = [this](const std::string& message, const PipePeer&) {
        sizes.push_back(message.size());
        return Job();
    };
    PipeListener listener(options, PipeListener::InOrder{0, note});
    ASSERT_TRUE(listener.Start());
    FileHandle holder = OpenPipeForWriting(options.name);
    ASSERT_TRUE(WritePiece(holder, kLong));
    EXPECT_TRUE(Send(kMiddle) && Send("short") && Send("short"));
    WaitUntil([&] { return listener.Counters().accepted >= 2; });
    holder.Reset();
    listener.Stop();
    EXPECT_THAT(sizes, ElementsAre(5u, 5u, kLong.size(), kMiddle.size()));
    EXPECT_EQ(listener.Counters().dropped, 0u);
}

// A quarter of the budget: what is over it waits, until a message that was kept is done with, or until the stop.
TEST_F(PipeMemory, ShortMessagesThatAreKeptCountToo) {
    std::vector<MemoryShare> kept;
    std::atomic<bool> keeps = true;
    const auto keep = [&](const std::string& message, const PipePeer& peer) {
        sizes.push_back(message.size());
        kept.push_back(peer.TakeMemory());
        if (!keeps) {
            kept.clear();
        }
        return Job();
    };
    PipeListener listener(options, PipeListener::InOrder{0, keep});
    ASSERT_TRUE(listener.Start());
    const std::string message(6'000, 'x');
    EXPECT_TRUE(Send(message) && Send(message) && Send("last"));
    WaitUntil([&] { return listener.Counters().accepted == 2; });
    EXPECT_TRUE(OpenPipeForWriting(options.name)) << "an empty connection takes nothing";
    WaitUntil([&] { return listener.Counters().empty == 1; });
    EXPECT_EQ(listener.Counters().accepted, 2u);
    keeps = false;
    listener.Stop();
    EXPECT_THAT(sizes, ElementsAre(6'000u, 6'000u, 4u));
}

TEST_F(PipeMemory, WhatWaitsForMemoryIsDroppedInTheEnd) {
    options.readTimeoutMilliseconds = 200;
    const KernelHandle finish(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto holdLongOnes = [&](const std::string& message, const PipePeer&) -> Job {
        sizes.push_back(message.size());
        return message == kLong ? Job([&] { WaitForSingleObject(finish.Get(), 20'000); }) : Job();
    };
    PipeListener listener(options, PipeListener::InOrder{1, holdLongOnes});
    ASSERT_TRUE(listener.Start());
    EXPECT_TRUE(Send(kLong) && Send(kMiddle));
    WaitUntil([&] { return listener.Counters().dropped != 0; });
    SetEvent(finish.Get());
    WaitUntil([&] { return listener.Counters().accepted != 0; });
    EXPECT_TRUE(Send(kMiddle));
    listener.Stop();
    EXPECT_THAT(sizes, ElementsAre(kLong.size(), kMiddle.size()));
    EXPECT_EQ(listener.Counters().noMemory, 1u);
    EXPECT_EQ(listener.Counters().dropped, 1u);
}

// Each allocation of the listener's own threads fails once: the message is counted as dropped, and the next one comes.
TEST_F(PipeMemory, AFailedAllocationCostsOneMessage) {
    for (const unsigned workers : {0u, 1u}) {
        const auto copyTwice = [=](const std::string& message, const PipePeer&) {
            std::string copy = message + ".";
            return workers == 0 ? Job() : Job([copy] { EXPECT_FALSE((copy + ".").empty()); });
        };
        PipeListener listener(options, PipeListener::InOrder{workers, copyTwice});
        ASSERT_TRUE(listener.Start());
        uint64_t done = 0;
        uint64_t failures = 0;
        const auto settle = [&] {
            ++done;
            WaitUntil([&] { return listener.Counters().accepted + listener.Counters().dropped >= done; });
        };
        for (std::size_t nth = 1;; ++nth) {
            const FailedAllocation failed(nth);
            Send(kLong);  // is cut off when the failure comes in the middle of it
            settle();
            if (!failed.Happened()) {
                break;
            }
            ++failures;
        }
        EXPECT_GE(failures, 4u);
        ASSERT_TRUE(Send("next"));
        settle();
        listener.Stop();
        EXPECT_EQ(listener.Counters().noMemory, failures);
        EXPECT_EQ(listener.Counters().accepted, 2u);
    }
}

TEST_F(PipeMemory, AListenerThatCannotAllocateDoesNotStart) {
    for (std::size_t nth = 1;; ++nth) {
        PipeListener listener(options, PipeListener::InOrder{0, [](std::string, const PipePeer&) { return Job(); }});
        const FailedAllocation failed(nth);
        if (listener.Start()) {
            EXPECT_FALSE(failed.Happened());
            break;
        }
        EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    }
}

// Each call of the listener's own threads fails once: it does not start, or one message is dropped at most.
TEST_F(PipeMemory, ACallOfTheSystemThatFailsCostsOneMessageAtMost) {
    uint64_t mayDrop = 1;
    const auto serve = [&] {
        PipeListener listener(options, [](const std::string&) {});
        if (!listener.Start()) {
            EXPECT_EQ(GetLastError(), FailedCall::kError);
            EXPECT_EQ(mayDrop, 1u);
            return;
        }
        for (int i = 0; i < 3; ++i) {
            Send(kMiddle);
        }
        listener.Stop();
        const PipeListenerCounters counters = listener.Counters();
        EXPECT_LE(counters.accepted, 3u);
        EXPECT_GE(counters.accepted + counters.dropped, 3u) << "the connection that the stop makes may be dropped";
        EXPECT_LE(counters.dropped, mayDrop);
    };
    const auto serveWell = [&] {
        mayDrop = 0;
        serve();
        mayDrop = 1;
    };
    EXPECT_GE(FailEachCall({"CreateNamedPipeW", "CreateIoCompletionPort", "SetFileCompletionNotificationModes",
                            "ConnectNamedPipe", "ReadFile", "PostQueuedCompletionStatus", "CreateFileW"},
                           FailsOn::OtherThreads, serve, serveWell),
              30u);
}

}  // namespace
}  // namespace wrb::test
