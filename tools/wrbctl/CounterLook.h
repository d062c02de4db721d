// One look at the command counters, and what came between two of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "CounterSection.h"

namespace wrb {

struct CommandCounters {
    std::string name;
    HandlerCounterSlot counters;
    TimeCounts times;
};

struct CounterLook {
    int64_t second = 0;         // since 1970-01-01 00:00 UTC
    uint64_t microseconds = 0;  // on the monotonic clock
    std::vector<CommandCounters> commands;
    int32_t callsInProgress = 0;
    Undelivered undelivered;
};

// Commands that were never called are left out unless `all`.
CounterLook LookAtCounters(const CounterReader& reader, bool all);

// What a command did between two looks.
struct CommandInterval {
    uint32_t calls = 0;
    uint32_t failures = 0;
    double callsPerSecond = 0;
    TimeCounts times{};
};
CommandInterval Between(const CounterLook& earlier, const CounterLook& later, const CommandCounters& command);

// `earlier` is null for the first look. Each text ends its last line.
std::string CounterTable(const CounterLook& look, const CounterLook* earlier);
std::string CounterJson(const CounterLook& look, const CounterLook* earlier);
std::string CounterMetrics(const CounterLook& look);  // the text format of Prometheus

}  // namespace wrb
