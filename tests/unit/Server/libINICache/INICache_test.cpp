#include "INICache.h"

#include <gtest/gtest.h>

#include "FakeProfile.h"
#include "ManualClock.h"

namespace {

struct INICache : testing::Test {
    // The number and the text of the section, which the cache has been asked for as "S".
    std::string Read(int bypass = 0) {
        char text[8];
        const uint32_t number = cache.readINIInt("S", "number", 0, bypass);
        cache.readINIString(text, "S", "text", "", sizeof text, bypass);
        return std::to_string(number) + text;
    }
    void Change(const std::string& value) { profile.values["S/number"] = profile.values["S/text"] = value; }

    CManualClock clock{0xFFFFFFFF};  // about to wrap
    CFakeProfile profile;
    CINICache cache{clock, profile};
};

TEST_F(INICache, AnEntryIsFreshUpToAndIncludingTheExpiryAndABypassOfOneLeavesIt) {
    cache.init("C:\\x.ini", 6);
    Change("1");
    EXPECT_EQ(Read(), "11");
    Change("2");
    EXPECT_EQ(Read(1), "22");
    EXPECT_EQ(Read(2), "11") << "only 1 bypasses";
    clock.AdvanceTick(6000);
    EXPECT_EQ(Read(), "11");
    clock.AdvanceTick(1);
    EXPECT_EQ(Read(), "22");
    EXPECT_EQ(profile.reads, 6);
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
