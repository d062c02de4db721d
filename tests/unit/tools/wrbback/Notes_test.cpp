#include "Notes.h"

#include <gtest/gtest.h>

#include "ManualClock.h"

namespace wrb {
namespace {

TEST(Notes, AFloodIsHeldBackAndOwnedUpTo) {
    CManualClock clock(4294967000);  // wraps within the first minute
    std::wstring written;
    CNotes notes([&](const std::wstring& note) { written += note + L"\n"; }, 2, clock);
    for (const uint32_t wait : {0, 0, 0, 59'999, 1, 60'000}) {
        clock.AdvanceTick(wait);
        notes.Write(std::to_wstring(wait));
    }
    EXPECT_EQ(written, L"0\n0\n2 more notes were held back\n1\n60000\n");
}

}  // namespace
}  // namespace wrb
