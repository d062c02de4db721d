#include "CommandLanes.h"

#include <gmock/gmock.h>

#include "Handle.h"

namespace wrb::test {
namespace {

using enum CommandLane;
using testing::ElementsAre;

constexpr DWORD kPatience = 20'000;

// Commands run until they are released; one named "quick" ends at once and tells.
struct CommandLanesTest : testing::Test {
    void Run(const std::string& name) {
        if (name == "quick") {
            SetEvent(quick.Get());
            return;
        }
        std::unique_lock guard(lock);
        unsigned& running = name == "upload" ? uploads : others;
        ++running;
        mostUploads = std::max(mostUploads, uploads);
        mostSlow = std::max(mostSlow, uploads + others);
        order.push_back(name);
        guard.unlock();
        SetEvent(started.Get());
        WaitForSingleObject(released.Get(), kPatience);
        guard.lock();
        --running;
    }
    CommandLanes::Run Runner() {
        return [this](const QueuedCommand& command) { Run(command.message); };
    }
    static LanePut Put(CommandLanes& lanes, CommandLane lane, const char* name) {
        QueuedCommand command{name, {}};
        const LanePut put = lanes.Put(lane, command);
        EXPECT_EQ(command.message, put == LanePut::Full ? name : "");
        return put;
    }

    KernelHandle quick{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    KernelHandle started{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    KernelHandle released{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::mutex lock;
    std::vector<std::string> order;
    unsigned uploads = 0;
    unsigned others = 0;
    unsigned mostUploads = 0;
    unsigned mostSlow = 0;
};

TEST_F(CommandLanesTest, AQuickCommandAlwaysFindsAWorker) {
    for (const unsigned workers : {2u, 3u, 4u, 20u}) {
        ResetEvent(released.Get());
        order.clear();
        mostUploads = mostSlow = 0;
        CommandLanes lanes({.workers = workers, .queuedPerLane = 100}, Runner());
        lanes.Start();
        for (unsigned i = 0; i < 2 * workers; ++i) {
            EXPECT_NE(Put(lanes, Upload, "upload"), LanePut::Full);
            EXPECT_NE(Put(lanes, Database, "database"), LanePut::Full);
        }
        for (int i = 0; i < 3; ++i) {
            Put(lanes, Quick, "quick");
            EXPECT_EQ(WaitForSingleObject(quick.Get(), kPatience), WAIT_OBJECT_0) << workers;
        }
        SetEvent(released.Get());
        lanes.Finish();
        EXPECT_EQ(order.size(), std::size_t{4 * workers});
        EXPECT_LE(mostUploads, std::max(1u, workers / 2));
        EXPECT_LE(mostSlow, std::max(1u, workers * 3 / 4));
    }
}

TEST_F(CommandLanesTest, OneWorkerRunsAllLanesInTheOrderOfArrival) {
    CommandLanes lanes({.workers = 1, .queuedPerLane = 100}, Runner());
    Put(lanes, Upload, "upload");
    Put(lanes, Database, "first");
    Put(lanes, Quick, "second");
    Put(lanes, Upload, "upload");
    Put(lanes, Database, "third");
    SetEvent(released.Get());
    lanes.Start();
    lanes.Finish();
    EXPECT_THAT(order, ElementsAre("upload", "first", "second", "upload", "third"));
}

TEST_F(CommandLanesTest, AFullLaneTakesNoMoreAndTheOthersDo) {
    CommandLanes lanes({.workers = 1, .queuedPerLane = 2}, Runner());
    lanes.Start();
    EXPECT_EQ(Put(lanes, Upload, "upload"), LanePut::Runs);
    ASSERT_EQ(WaitForSingleObject(started.Get(), kPatience), WAIT_OBJECT_0);
    EXPECT_EQ(Put(lanes, Upload, "upload"), LanePut::Waits);
    EXPECT_EQ(Put(lanes, Upload, "upload"), LanePut::Waits);
    EXPECT_EQ(Put(lanes, Upload, "upload"), LanePut::Full);
    EXPECT_EQ(Put(lanes, Database, "database"), LanePut::Waits);
    lanes.WaitUntilNoneWaits(std::chrono::steady_clock::now());  // in vain
    EXPECT_EQ(lanes.TakeQueued()->message, "database");
    EXPECT_EQ(lanes.TakeQueued()->message, "upload");
    EXPECT_EQ(lanes.TakeQueued()->message, "upload");
    EXPECT_FALSE(lanes.TakeQueued());
    EXPECT_EQ(Put(lanes, Upload, "upload"), LanePut::Waits);
    SetEvent(released.Get());
    lanes.WaitUntilNoneWaits(std::chrono::steady_clock::now() + std::chrono::seconds(20));
    lanes.Finish();
    EXPECT_EQ(order.size(), 2u);
}

}  // namespace
}  // namespace wrb::test
