#include "INICache.h"

#include <gtest/gtest.h>

#include "FakeProfile.h"
#include "ManualClock.h"

namespace {

class INICache : public testing::Test {
  protected:
    uint32_t Text(const char* key, const char* defaultText = "") {
        return cache.readINIString(buffer, "S", key, defaultText, sizeof buffer);
    }

    CManualClock clock;
    CFakeProfile profile;
    CINICache cache{clock, profile};
    char buffer[64] = {};
};

TEST(INICacheExpiry, AnEntryIsFreshUpToAndIncludingTheExpiry) {
    constexpr struct {
        uint32_t firstTick;
        uint32_t elapsed;
        int fileReads;
    } kCases[] = {{0, 6000, 1}, {0, 6001, 2}, {0xFFFFFFFF, 6000, 1}, {0xFFFFFFFF, 6001, 2}};  // the tick counter wraps
    for (const auto& expiry : kCases) {
        SCOPED_TRACE(testing::Message() << expiry.firstTick << " + " << expiry.elapsed);
        CManualClock clock(expiry.firstTick);
        CFakeProfile profile;
        CINICache cache(clock, profile);
        cache.init("C:\\x.ini", 6);
        profile.values["S/number"] = "1";
        profile.values["S/text"] = "a";
        char text[8];
        cache.readINIInt("S", "number", 0);
        cache.readINIString(text, "S", "text", "", sizeof text);
        profile.values["S/number"] = "2";
        profile.values["S/text"] = "b";
        clock.AdvanceTick(expiry.elapsed);

        const bool again = expiry.fileReads == 2;
        EXPECT_EQ(cache.readINIInt("S", "number", 0), again ? 2u : 1u);
        cache.readINIString(text, "S", "text", "", sizeof text);
        EXPECT_STREQ(text, again ? "b" : "a");
        EXPECT_EQ(profile.reads, 2 * expiry.fileReads);
    }
}

TEST_F(INICache, BypassOfOneReadsTheFileAndLeavesTheEntry) {
    profile.values["S/n"] = "1";
    profile.values["S/t"] = "old";
    cache.readINIInt("S", "n", 0);
    Text("t");
    profile.values["S/n"] = "2";
    profile.values["S/t"] = "new";

    EXPECT_EQ(cache.readINIInt("S", "n", 0, 1), 2u);
    EXPECT_EQ(cache.readINIInt("S", "n", 0, 2), 1u) << "only 1 bypasses";
    wchar_t wide[8];
    EXPECT_EQ(cache.readINIString(wide, L"S", L"t", L"", 8, 1), 3u);
    EXPECT_STREQ(wide, L"new");
    Text("t");
    EXPECT_STREQ(buffer, "old");
}

TEST_F(INICache, TextsAreCutToTheBuffer) {
    profile.values["S/t"] = "0123456789";
    constexpr struct {
        uint32_t size;
        uint32_t result;
        const char* narrow;
        const wchar_t* wide;
    } kCases[] = {
        {4, 3, "012", L"012"},  // first, so that a short reader would spoil the entry for the others
        {0, 0, "#", L"#"},
        {1, 0, "", L""},
        {10, 9, "012345678", L"012345678"},
        {11, 10, "0123456789", L"0123456789"},
        {0xFFFFFFFF, 10, "0123456789", L"0123456789"},
    };
    for (const auto& cut : kCases) {
        char narrow[16] = "#";
        wchar_t wide[16] = L"#";
        EXPECT_EQ(cache.readINIString(narrow, "S", "t", "", cut.size), cut.result);
        EXPECT_EQ(cache.readINIString(wide, L"S", L"t", L"", cut.size), cut.result);
        EXPECT_STREQ(narrow, cut.narrow);
        EXPECT_STREQ(wide, cut.wide);
    }
    EXPECT_EQ(profile.reads, 1);
}

}  // namespace
