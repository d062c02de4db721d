#include <gtest/gtest.h>

#include "FakeProfile.h"
#include "INICache.h"
#include "ManualClock.h"

namespace {

TEST(INICacheWrite, IsTriedSixTimesAndDropsTheEntriesWhateverComesOfIt) {
    CManualClock clock;
    CFakeProfile profile;
    CINICache cache(clock, profile);
    constexpr struct {
        int failures;
        int result;
        int attempts;
    } kCases[] = {{0, 1, 1}, {1, 1, 2}, {5, 1, 6}, {6, 0, 6}};
    for (const auto& write : kCases) {
        SCOPED_TRACE(write.failures);
        profile.values["S/k"] = "1";
        cache.clear();
        char text[8];
        cache.readINIInt("S", "k", 0);
        cache.readINIString(text, "S", "k", "", sizeof text);
        profile.failingWrites = write.failures;
        profile.writeAttempts = profile.reads = 0;
        profile.pauses.clear();

        EXPECT_EQ(cache.writeINIInt(L"S", L"k", -7), write.result);
        EXPECT_EQ(profile.writeAttempts, write.attempts);
        EXPECT_EQ(profile.pauses, std::vector<uint32_t>(static_cast<std::size_t>(write.failures), 100u));

        EXPECT_EQ(cache.readINIInt("S", "k", 0), write.result != 0 ? static_cast<uint32_t>(-7) : 1u);
        cache.readINIString(text, "S", "k", "", sizeof text);
        EXPECT_STREQ(text, write.result != 0 ? "-7" : "1");
        EXPECT_EQ(profile.reads, 2) << "both reads go to the file";
    }
}

}  // namespace
