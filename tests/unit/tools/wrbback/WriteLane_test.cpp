// Changes on their way to the database, of which the engine holds one.
#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <vector>

#include "JobLimit.h"
#include "WriteLane.h"

namespace wrb {
namespace {

TEST(WriteLane, ReadersSeeEarlierChangesAndPassOneThatIsHeld) {
    std::promise<bool> engine;
    std::vector<int> done;
    WriteLane lane;
    lane.Start();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(lane.Put(L"quick", 1, [&done, i] { return done.push_back(i), true; }));
    }
    lane.WaitFor(lane.Number());
    EXPECT_EQ(done.size(), 100u);
    EXPECT_TRUE(lane.Put(L"held", 1, [held = engine.get_future().share()] { return held.get(); }));
    lane.WaitFor(lane.Number());  // returns, though nobody lets go of it
    EXPECT_FALSE(lane.Put(L"too long", WriteLane::kMostBytes + 1, [] { return true; }));
    std::size_t queued = 0;
    while (lane.Put(L"queued", 1, [&done] { return done.push_back(100), true; })) {
        ++queued;
    }
    EXPECT_EQ(queued, WriteLane::kMostQueued);
    EXPECT_EQ(TallyText(lane.Waiting()), L"1 held, 10000 queued");
    engine.set_value(true);
    EXPECT_EQ(lane.Finish(), Tally());
    EXPECT_EQ(lane.Waiting(), Tally());
    EXPECT_EQ(done.size(), 100 + queued);
    EXPECT_TRUE(std::ranges::is_sorted(done));
}

TEST(JobLimit, AJobCountsUntilItIsDestroyed) {
    JobLimit limit(2);
    unsigned done = 0;
    for (int round = 0; round < 2; ++round) {
        const Job first = limit.Admit([&done] { ++done; });
        Job second = limit.Admit([&done] { ++done; });
        ASSERT_TRUE(first && second);
        second();
        EXPECT_FALSE(limit.Admit([] {}));
        second = {};
        EXPECT_TRUE(limit.Admit([] {}));
    }
    EXPECT_EQ(done, 2u);
}

}  // namespace
}  // namespace wrb
