#include "LogFilter.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "AllocationCount.h"
#include "DebugLog.h"

namespace {

using wrb::CLogFilter;
using wrb::LogFilterAdmits;
using wrb::LogFilterWord;

TEST(LogFilter, EveryLevelIsHeldAgainstTheThresholdByTheRankOfItsClass) {
    const struct {
        std::vector<uint32_t> levels;
        int rank;
    } classes[] = {
        {{'N'}, -1},   {{0, 1, 2, 'F'}, 2}, {{3, 4, 'E'}, 4},
        {{5, 'W'}, 5}, {{6, 7, 'I'}, 7},    {{8, 'D', 9, 10, 'e', 'd', 'f', 'i', 'n', 'w', 'A', 255}, 9},
    };
    for (const auto& row : classes) {
        for (const uint32_t level : row.levels) {
            for (int16_t threshold = -3; threshold <= 12; ++threshold) {
                EXPECT_EQ(LogFilterAdmits(LogFilterWord(threshold), level), row.rank <= threshold)
                    << "level " << level << " at " << threshold;
            }
            EXPECT_FALSE(LogFilterAdmits(LogFilterWord(INT16_MIN), level));
            EXPECT_TRUE(LogFilterAdmits(LogFilterWord(INT16_MAX), level));
            EXPECT_TRUE(LogFilterAdmits(0xFFFE'0000, level)) << "without bit 16 there is no filter";
        }
    }
    for (const uint32_t level : {256u, 300u, 0x10044u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(LogFilterAdmits(LogFilterWord(INT16_MIN), level)) << level;
    }
}

// What another process of the system sees and sets.
TEST(LogFilter, TheWordIsSharedUnderItsName) {
    CLogFilter& filter = CLogFilter::Shared();
    const wrb::CKernelHandle section(
        OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, L"Global\\log_level_map_file"));
    ASSERT_TRUE(section);
    const wrb::CMappedView view(MapViewOfFile(section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, 4));
    ASSERT_TRUE(view);
    auto* const word = static_cast<volatile uint32_t*>(view.Get());

    *word = LogFilterWord(4);
    EXPECT_EQ(filter.Word(), 0x10004u);
    EXPECT_FALSE(filter.Admits('W'));
    EXPECT_TRUE(filter.Set(LogFilterWord(5)));
    EXPECT_EQ(*word, 0x10005u);
    EXPECT_TRUE(filter.Admits('W'));
    filter.Set(0);
}

TEST(LogFilter, ALineThatIsFilteredOutAllocatesNothingAndEvaluatesNothing) {
    ASSERT_TRUE(CLogFilter::Shared().Set(LogFilterWord(5)));
    int evaluated = 0;
    SetLastError(ERROR_CRC);
    const std::size_t before = AllocationsOfThisThread();
    for (int i = 0; i < 1'000; ++i) {
        WRB_LOG(kLogDebug, L"%d", ++evaluated);
        DebugLog(kLogDebug8, L"file", 1, L"%s", L"text");
        DebugLogA(kLogInfo, L"file", 1, "%s", "text");
    }
    EXPECT_EQ(AllocationsOfThisThread(), before);
    EXPECT_EQ(evaluated, 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
    CLogFilter::Shared().Set(0);
}

}  // namespace
