#include <atomic>
#include <string>

#include "Allocations.h"
#include "DebugLog.h"
#include "Ratio.h"

namespace wrb::bench {
namespace {

void FilteredLine(benchmark::State& state) {
    const std::wstring content(200, L'x');
    const AllocationCounter counter(state);
    for (auto _ : state) {
        WRB_LOG(kLogDebug8, L"content:[%s]", content.c_str());
        benchmark::ClobberMemory();
    }
}

void FilteredCall(benchmark::State& state) {
    const std::wstring content(200, L'x');
    const AllocationCounter counter(state);
    for (auto _ : state) {
        DebugLog(kLogDebug8, WRB_SOURCE_FILE, __LINE__, L"content:[%s]", content.c_str());
        benchmark::ClobberMemory();
    }
}

void AtomicLoad(benchmark::State& state) {
    static std::atomic<uint32_t> word{1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(word.load(std::memory_order_relaxed));
        benchmark::ClobberMemory();
    }
}

}  // namespace

void AddLogBenchmarks() {
    AddRatio("debug line, filtered out", FilteredLine, "one load of the word", AtomicLoad, Goal::Nanoseconds, 5);
    AddRatio("debug call, filtered out", FilteredCall, "a load of the word", AtomicLoad, Goal::Nanoseconds, 5);
}

}  // namespace wrb::bench
