#include <cstdio>

#include "CounterLook.h"
#include "JsonText.h"

namespace wrb {
namespace {

template <typename... Values>
std::string Format(const char* format, Values... values) {
    char line[256];
    const int length = std::snprintf(line, sizeof line, format, values...);
    return std::string(line, static_cast<std::size_t>(length));
}

double Milliseconds(const TimeCounts& times, double part) {
    return static_cast<double>(PercentileOf(times, part)) / 1000;
}

constexpr struct {
    double part;
    const char* key;  // in JSON
} kPercentiles[] = {{0.5, "p50Ms"}, {0.9, "p90Ms"}, {0.95, "p95Ms"}, {0.99, "p99Ms"}};
constexpr char kPercentileHeads[] = "   p50 ms   p90 ms   p95 ms   p99 ms\n";

std::string Percentiles(const TimeCounts& times) {
    std::string text;
    for (const auto& percentile : kPercentiles) {
        text += Format(" %8.2f", Milliseconds(times, percentile.part));
    }
    return text + "\n";
}

std::string TotalsTable(const CounterLook& look) {
    std::string text =
        std::string("command                                   calls  failed  avg ms  max ms   total ms") +
        kPercentileHeads;
    for (const auto& [name, slot, times] : look.commands) {
        text += Format("%-38s %8u %7u %7u %7u %10llu", name.c_str(), slot.calls, slot.failures, slot.average,
                       slot.maximum, static_cast<unsigned long long>(slot.total)) +
                Percentiles(times);
    }
    return text;
}

std::string IntervalTable(const CounterLook& look, const CounterLook& earlier) {
    std::string text =
        std::string("command                                new calls     per s    failed") + kPercentileHeads;
    for (const CommandCounters& command : look.commands) {
        const CommandInterval interval = Between(earlier, look, command);
        if (interval.calls != 0 || CountOf(interval.times) != 0) {
            text += Format("%-38s %9u %9.1f %9u", command.name.c_str(), interval.calls, interval.callsPerSecond,
                           interval.failures) +
                    Percentiles(interval.times);
        }
    }
    return text;
}

void SetPercentiles(Json::Value& row, const TimeCounts& times) {
    for (const auto& percentile : kPercentiles) {
        row[percentile.key] = Milliseconds(times, percentile.part);
    }
}

Json::Value CommandJson(const CommandCounters& command) {
    Json::Value row;
    row["name"] = command.name;
    row["calls"] = command.counters.calls;
    row["failures"] = command.counters.failures;
    row["averageMs"] = command.counters.average;
    row["maximumMs"] = command.counters.maximum;
    row["totalMs"] = static_cast<Json::UInt64>(command.counters.total);
    SetPercentiles(row, command.times);
    return row;
}

Json::Value IntervalJson(const CommandInterval& interval) {
    Json::Value row;
    row["calls"] = interval.calls;
    row["callsPerSecond"] = interval.callsPerSecond;
    row["failures"] = interval.failures;
    SetPercentiles(row, interval.times);
    return row;
}

std::string Metric(const char* name, const char* type, const char* help) {
    return Format("# HELP warrenby_%s %s\n# TYPE warrenby_%s %s\n", name, help, name, type);
}

// A line for each command.
template <typename Value>
std::string CommandMetric(const CounterLook& look, const char* name, const char* help, Value value) {
    std::string text = Metric(name, "counter", help);
    for (const CommandCounters& command : look.commands) {
        text += Format("warrenby_%s{command=\"%s\"} %u\n", name, command.name.c_str(), value(command));
    }
    return text;
}

std::string TimeMetric(const CounterLook& look) {
    constexpr char kName[] = "command_seconds";
    std::string text = Metric(kName, "summary", "Run times of calls that ended, without the reply.");
    for (const CommandCounters& command : look.commands) {
        for (const auto& percentile : kPercentiles) {
            text += Format("warrenby_%s{command=\"%s\",quantile=\"%g\"} %g\n", kName, command.name.c_str(),
                           percentile.part, Milliseconds(command.times, percentile.part) / 1000);
        }
        text += Format("warrenby_%s_sum{command=\"%s\"} %.3f\n", kName, command.name.c_str(),
                       static_cast<double>(command.counters.total) / 1000);
        text += Format("warrenby_%s_count{command=\"%s\"} %llu\n", kName, command.name.c_str(),
                       static_cast<unsigned long long>(CountOf(command.times)));
    }
    return text;
}

}  // namespace

std::string CounterTable(const CounterLook& look, const CounterLook* earlier) {
    const std::string text = earlier == nullptr ? TotalsTable(look) : IntervalTable(look, *earlier);
    return text + Format("calls in progress: %d\nnot handed over: %u log rows, %u events\n", look.callsInProgress,
                         look.undelivered.rows, look.undelivered.events);
}

std::string CounterJson(const CounterLook& look, const CounterLook* earlier) {
    Json::Value result;
    result["time"] = static_cast<Json::Int64>(look.second);
    result["callsInProgress"] = look.callsInProgress;
    result["undeliveredRows"] = look.undelivered.rows;
    result["undeliveredEvents"] = look.undelivered.events;
    if (earlier != nullptr) {
        result["intervalSeconds"] = static_cast<double>(look.microseconds - earlier->microseconds) / 1e6;
    }
    Json::Value& commands = result["commands"] = Json::Value(Json::arrayValue);
    for (const CommandCounters& command : look.commands) {
        Json::Value& row = commands.append(CommandJson(command));
        if (earlier != nullptr) {
            row["interval"] = IntervalJson(Between(*earlier, look, command));
        }
    }
    return JsonLine(result) + "\n";
}

std::string CounterMetrics(const CounterLook& look) {
    return CommandMetric(look, "command_calls_total", "Calls of a command that began.",
                         [](const CommandCounters& command) { return command.counters.calls; }) +
           CommandMetric(look, "command_failures_total", "Calls of a command that reported failure.",
                         [](const CommandCounters& command) { return command.counters.failures; }) +
           TimeMetric(look) + Metric("calls_in_progress", "gauge", "Calls that have not ended.") +
           Format("warrenby_calls_in_progress %d\n", look.callsInProgress) +
           Metric("undelivered_rows_total", "counter", "Log rows of reports that no service took.") +
           Format("warrenby_undelivered_rows_total %u\n", look.undelivered.rows) +
           Metric("undelivered_events_total", "counter", "Events of reports that no service took.") +
           Format("warrenby_undelivered_events_total %u\n", look.undelivered.events);
}

}  // namespace wrb
