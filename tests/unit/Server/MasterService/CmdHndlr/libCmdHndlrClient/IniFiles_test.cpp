// The path and the expiry of each INI cache. Clock and profile are the test's: the file system takes more than one
// spelling of a path.
#include <gtest/gtest.h>

#include "FakeProfile.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "ManualClock.h"
#include "Text.h"
#include "cmdhl.h"

static ManualClock g_clock;
static FakeProfile g_profile;

const wrb::IClock& wrb::SystemClock() {
    return g_clock;
}

wrb::IProfileAccess& wrb::SystemProfile() {
    return g_profile;
}

TEST(IniFiles, EachCacheHasItsPathAndItsExpiry) {
    cmdhl_Initialize(L"", L"", nullptr);
    const struct {
        CINICache& cache;
        const char* path;  // after the home folder
        uint32_t seconds;
    } kCaches[] = {{ScanIniCache(), "wrbscan.ini", 6},
                   {ServerIniCache(), "Private\\wrbserver.ini", 6},
                   {SbaIniCache(), "\\private\\wrbSbaSvr.ini", 30}};
    for (const auto& row : kCaches) {
        SCOPED_TRACE(row.path);
        const auto read = [&] { return row.cache.readINIInt(L"S", L"k", 0); };
        g_profile.values["S/k"] = "1";
        EXPECT_EQ(read(), 1u);
        EXPECT_EQ(g_profile.lastPath, wrb::WideToAnsi(wrb::HomeFolder()) + row.path);
        g_profile.values["S/k"] = "2";
        g_clock.AdvanceTick(row.seconds * 1000);
        EXPECT_EQ(read(), 1u);
        g_clock.AdvanceTick(1);
        EXPECT_EQ(read(), 2u);
    }
    cmdhl_Finalize();
}
