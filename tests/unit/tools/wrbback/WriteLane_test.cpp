// Changes on their way to the database, of which the engine holds one.
#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <vector>

#include "WriteLane.h"

namespace wrb {
namespace {

TEST(WriteLane, ReadersSeeEarlierChangesAndPassOneThatIsHeld) {
    std::promise<bool> engine;
    std::vector<int> done;
    WriteLane lane;
    lane.Start();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(lane.Put([&done, i] { return done.push_back(i), true; }));
    }
    lane.WaitFor(lane.Number());
    EXPECT_EQ(done.size(), 100u);
    EXPECT_TRUE(lane.Put([held = engine.get_future().share()] { return held.get(); }));
    lane.WaitFor(lane.Number());  // returns, though nobody lets go of it
    std::size_t queued = 0;
    while (lane.Put([&done] { return done.push_back(100), true; })) {
        ++queued;
    }
    EXPECT_EQ(queued, WriteLane::kMostQueued);
    engine.set_value(true);
    EXPECT_EQ(lane.Finish(), 0u);
    EXPECT_EQ(done.size(), 100 + queued);
    EXPECT_TRUE(std::ranges::is_sorted(done));
}

}  // namespace
}  // namespace wrb
