// Runs the benchmarks and prints each figure beside its floor. Takes Google Benchmark's own options; by default every
// pair is repeated, its repetitions interleaved, and the medians are compared. Progress goes to stderr.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "DebugLog.h"
#include "Ratio.h"

namespace {

using wrb::bench::Goal;
using wrb::bench::Ratio;

struct Measured {
    double time = 0;          // nanoseconds an iteration
    double allocations = -1;  // an iteration, where they were counted
};

// Keeps the medians for the table at the end, and shows progress on stderr.
class RatioReporter final : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
            } else if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median") {
                Keep(run);
            }
        }
        std::fputc('.', stderr);
    }

    const Measured* Find(const std::string& name, int threads) const {
        const auto found = m_measured.find(Key(name, threads));
        return found == m_measured.end() ? nullptr : &found->second;
    }

  private:
    static std::string Key(const std::string& name, int threads) { return name + "/" + std::to_string(threads); }

    void Keep(const Run& run) {
        Measured& measured = m_measured[Key(run.run_name.function_name, static_cast<int>(run.threads))];
        measured.time = run.GetAdjustedRealTime();
        if (const auto counter = run.counters.find("allocations"); counter != run.counters.end()) {
            measured.allocations = counter->second;
        }
    }

    std::map<std::string, Measured> m_measured;
};

std::string GoalText(const Ratio& row) {
    char text[64];
    switch (row.goal) {
        case Goal::AtMost:
            std::snprintf(text, sizeof text, "at most %.2fx", row.limit);
            break;
        case Goal::FasterBy:
            std::snprintf(text, sizeof text, "%.0fx faster", row.limit);
            break;
        case Goal::Nanoseconds:
            std::snprintf(text, sizeof text, "at most %.0f ns", row.limit);
            break;
    }
    return text;
}

bool Met(const Ratio& row, double figure, double floor) {
    switch (row.goal) {
        case Goal::AtMost:
            return figure <= floor * row.limit;
        case Goal::FasterBy:
            return figure * row.limit <= floor;
        case Goal::Nanoseconds:
            return figure <= row.limit;
    }
    return false;
}

void PrintRow(const Ratio& row, const Measured& figure, const Measured& floor) {
    const double ours = figure.time;
    const double least = floor.time;
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, row.goal == Goal::FasterBy ? "1/%.0f" : "%.2f",
                  row.goal == Goal::FasterBy ? least / ours : ours / least);
    char allocations[32] = "";
    if (figure.allocations >= 0) {
        std::snprintf(allocations, sizeof allocations, "%.2f", figure.allocations);
    }
    std::printf("%-44s %2d %14.1f %14.1f %8s  %-16s %-6s %6s  %s\n", row.title.c_str(), row.threads, ours, least, ratio,
                GoalText(row).c_str(), Met(row, ours, least) ? "met" : "MISSED", allocations, row.floorText.c_str());
}

void PrintRatios(const RatioReporter& reporter) {
    std::printf("\n%-44s %2s %14s %14s %8s  %-16s %-6s %6s  %s\n", "figure", "th", "ns", "floor ns", "ratio", "goal",
                "", "allocs", "floor");
    for (const Ratio& row : wrb::bench::Ratios()) {
        const Measured* const figure = reporter.Find(row.figure, row.threads);
        const Measured* const floor = reporter.Find(row.floor, row.threads);
        if (figure != nullptr && floor != nullptr) {
            PrintRow(row, *figure, *floor);
        }
    }
}

// The caller's options come last and win.
std::vector<std::string> Arguments(int count, char** values) {
    std::vector<std::string> arguments = {values[0], "--benchmark_repetitions=9", "--benchmark_min_time=0.1",
                                          "--benchmark_enable_random_interleaving=true",
                                          "--benchmark_report_aggregates_only=true"};
    arguments.insert(arguments.end(), values + 1, values + count);
    return arguments;
}

}  // namespace

int main(int count, char** values) {
    std::vector<std::string> arguments = Arguments(count, values);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size());
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    int pointerCount = static_cast<int>(pointers.size());
    benchmark::Initialize(&pointerCount, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(pointerCount, pointers.data())) {
        return 2;
    }
    // As on a server in production: the log is set up, and its filter lets warnings and errors through.
    DebugLogSetup(L"", L"", "BENCH", true);
    wrb::LogFilter::Shared().Set(wrb::LogFilterWord(wrb::kRankWarning));
    wrb::bench::AddLogBenchmarks();
    wrb::bench::AddDispatchBenchmarks();
    wrb::bench::AddIniBenchmarks();
    wrb::bench::AddRecordBenchmarks();
    wrb::bench::AddRenderBenchmarks();
    wrb::bench::AddPipeBenchmarks();
    wrb::bench::AddStoreBenchmarks();
    wrb::bench::AddFirewallBenchmarks();
    wrb::bench::AddAlertBenchmarks();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    PrintRatios(reporter);
    return 0;
}
