#include "PipeFixture.h"
#include "PipeWork.h"
#include "Ratio.h"

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

}  // namespace

void AddPipeBenchmarks() {
    AddRatio("CMDHL_ECHO", Repeat<Echo>, "connect, set the mode, write, close", Repeat<BareEcho>, Goal::AtMost, 1.10,
             {1, 2, 8});
    AddRatio("CMDHL_GET_MS_CFG", Repeat<GetManualScan>, "five bare connections", Repeat<FiveConnections>, Goal::AtMost,
             1.15, {1, 2, 8});
    AddRatio("CMDHL_SET_MS_CFG", Repeat<SetManualScan>, "two bare messages", Repeat<TwoMessages>, Goal::AtMost, 1.15,
             {1, 2, 8});
    AddRatio("CMDHL_GET_CLIENT_ALL_SETTING", Repeat<GetAllSettings>, "the commands of its parts", Repeat<GetTheirParts>,
             Goal::AtMost, 0.95);
}

}  // namespace wrb::bench
