#include "Notes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "ManualClock.h"

namespace wrb {
namespace {

TEST(Notes, AFloodIsHeldBackAndOwnedUpTo) {
    CManualClock clock(4294967000);  // wraps within the first minute
    std::vector<std::wstring> written;
    CNotes notes([&](const std::wstring& note) { written.push_back(note); }, 2, clock);
    for (int i = 0; i < 5; ++i) {
        notes.Write(L"a");
    }
    clock.AdvanceTick(59'999);
    notes.Write(L"b");
    EXPECT_THAT(written, testing::ElementsAre(L"a", L"a"));
    clock.AdvanceTick(1);
    notes.Write(L"c");
    clock.AdvanceTick(60'000);
    notes.Write(L"d");
    EXPECT_THAT(written, testing::ElementsAre(L"a", L"a", L"4 more notes were held back", L"c", L"d"));
}

}  // namespace
}  // namespace wrb
