#include "Latencies.h"

#include <gtest/gtest.h>

namespace wrb {
namespace {

// What comes out is no less than what went in, and at most a sixteenth more.
TEST(Latencies, EveryTimeIsKeptToASixteenth) {
    for (uint64_t time = 0; time <= UINT32_MAX; time += 1 + time / 7) {
        Latencies latencies;
        latencies.Add(time);
        latencies.Add(UINT64_MAX);
        const uint64_t median = latencies.Percentile(0.5);
        EXPECT_GE(median, time);
        EXPECT_LE(median, time + time / 16);
        EXPECT_EQ(latencies.Slowest(), UINT64_MAX);
    }
}

TEST(Latencies, PercentilesCountFromTheFastest) {
    Latencies latencies;
    EXPECT_EQ(latencies.Percentile(0.5), 0u);
    for (uint64_t time = 1000; time > 0; --time) {
        latencies.Add(time * 1000);
    }
    const struct {
        double part;
        uint64_t least;
    } kRows[] = {{0, 1'000}, {0.001, 1'000}, {0.5, 500'000}, {0.99, 990'000}, {0.999, 999'000}, {1, 1'000'000}};
    for (const auto& [part, least] : kRows) {
        EXPECT_GE(latencies.Percentile(part), least) << part;
        EXPECT_LE(latencies.Percentile(part), least + least / 16) << part;
    }
    EXPECT_EQ(latencies.Percentile(1), 1'000'000u) << "no more than the slowest";
    EXPECT_EQ(latencies.Count(), 1000u);
}

}  // namespace
}  // namespace wrb
