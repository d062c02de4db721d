#include "CallFacts.h"
#include "CommandTrace.h"
#include "PipeFixture.h"
#include "PipeWork.h"
#include "Ratio.h"
#include "RecordingFeed.h"
#include "TracedDispatch.h"

namespace wrb::bench {
namespace {

template <bool (*Work)()>
void Repeat(benchmark::State& state) {
    NeedSink();
    NeedDatabase();
    for (auto _ : state) {
        if (!Work()) {
            state.SkipWithError("a call failed");
        }
    }
}

// What an echo costs more while nobody traces or records: the look for each, and one where the reply is sent.
void TraceUnwatched(benchmark::State& state) {
    StartTrace();
    for (auto _ : state) {
        benchmark::DoNotOptimize(WatchedFeed());
        benchmark::DoNotOptimize(WatchedRecordingFeed());
        benchmark::DoNotOptimize(CurrentCallFacts());
    }
}

}  // namespace

void AddPipeBenchmarks() {
    AddRatio("CMDHL_ECHO", Repeat<Echo>, "connect, set the mode, write, close", Repeat<BareEcho>, Goal::AtMost, 1.10,
             {1, 2, 8});
    AddRatio("trace and recording while nobody looks", TraceUnwatched, "one CMDHL_ECHO", Repeat<Echo>, Goal::FasterBy,
             100);
    AddRatio("CMDHL_GET_MS_CFG", Repeat<GetManualScan>, "five bare connections", Repeat<FiveConnections>, Goal::AtMost,
             1.15, {1, 2, 8});
    AddRatio("CMDHL_SET_MS_CFG", Repeat<SetManualScan>, "two bare messages", Repeat<TwoMessages>, Goal::AtMost, 1.15,
             {1, 2, 8});
    AddRatio("CMDHL_GET_CLIENT_ALL_SETTING", Repeat<GetAllSettings>, "the commands of its parts", Repeat<GetTheirParts>,
             Goal::AtMost, 0.95);
}

}  // namespace wrb::bench
