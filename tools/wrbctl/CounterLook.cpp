#include "CounterLook.h"

#include <algorithm>

#include "Clock.h"
#include "CounterCatalog.h"

namespace wrb {

CounterLook LookAtCounters(const CounterReader& reader, bool all) {
    CounterLook look;
    look.second = SystemClock().CalendarSeconds();
    look.microseconds = SystemClock().MonotonicMicroseconds();
    look.callsInProgress = reader.CallsInProgress();
    look.undelivered = reader.Undelivered();
    for (const CountedRow& row : CountedRows()) {
        const HandlerCounterSlot counters = reader.Slot(row.slot);
        if (all || counters.calls != 0) {
            look.commands.push_back({row.name, counters, reader.Times(row.slot)});
        }
    }
    return look;
}

// A command whose counters went down has been set to zero in between.
CommandInterval Between(const CounterLook& earlier, const CounterLook& later, const CommandCounters& command) {
    const auto before = std::ranges::find(earlier.commands, command.name, &CommandCounters::name);
    CommandInterval interval{command.counters.calls, command.counters.failures, 0, command.times};
    if (before != earlier.commands.end() && before->counters.calls <= command.counters.calls) {
        interval.calls -= before->counters.calls;
        interval.failures -= before->counters.failures;
        interval.times = CountedSince(before->times, command.times);
    }
    const auto passed = static_cast<double>(later.microseconds - earlier.microseconds);
    interval.callsPerSecond = interval.calls * 1e6 / std::max(passed, 1.0);
    return interval;
}

}  // namespace wrb
