#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "DebugLog.h"
#include "FakeProfile.h"
#include "INICache.h"
#include "ManualClock.h"
#include "Text.h"

namespace {

class INICacheWrite : public testing::Test {
  protected:
    void SetUp() override { TakeCapturedLog(); }

    CManualClock clock;
    CFakeProfile profile;
    CINICache cache{clock, profile};
};

std::vector<tagCapturedLine> ExpectedLog(int failures) {
    constexpr int kAttempts = 6;
    std::vector<tagCapturedLine> lines;
    for (int i = 0; i < failures; ++i) {
        lines.push_back(
            {'I', wrb::FormatWide(L"CINICache::writeINIString - Failed to write value to INI file. Section: "
                                  L"S, Key: k, Value: -7, Error: 0x%08x, Retry: %d",
                                  i + 1, i)});
    }
    if (failures == kAttempts) {
        lines.push_back({'W',
                         L"CINICache::writeINIString - Failed to write value to INI file. Section: S, Key: k, "
                         L"Value: -7, Error: 0x00000006"});
    }
    return lines;
}

TEST_F(INICacheWrite, IsTriedSixTimesAndDropsTheEntriesWhateverComesOfIt) {
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
        EXPECT_EQ(TakeCapturedLog(), ExpectedLog(write.failures));

        EXPECT_EQ(cache.readINIInt("S", "k", 0), write.result != 0 ? static_cast<uint32_t>(-7) : 1u);
        cache.readINIString(text, "S", "k", "", sizeof text);
        EXPECT_STREQ(text, write.result != 0 ? "-7" : "1");
        EXPECT_EQ(profile.reads, 2) << "both reads go to the file";
    }
}

TEST_F(INICacheWrite, DropsOnlyTheWrittenKey) {
    cache.readINIInt("S", "k", 1);
    cache.readINIInt("S", "other", 1);
    cache.writeINIInt("S", "k", 2);
    EXPECT_EQ(cache.readINIInt("S", "k", 3), 2u);
    EXPECT_EQ(cache.readINIInt("S", "other", 3), 1u);
}

TEST_F(INICacheWrite, RefusesWhatWouldDeleteASection) {
    EXPECT_EQ(cache.writeINIString("S", static_cast<const char*>(nullptr), "v"), 0);
    EXPECT_EQ(cache.writeINIString(static_cast<const wchar_t*>(nullptr), L"k", L"v"), 0);
    EXPECT_EQ(profile.writeAttempts, 0);
}

}  // namespace
