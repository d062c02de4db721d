#include <windows.h>

#include <optional>
#include <string>

#include "Console.h"
#include "CounterLook.h"
#include "ExitCode.h"
#include "Subcommands.h"
#include "SystemText.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl counters                            since the start of the server
  wrbctl counters --interval 2               then what is new, every two seconds, until Ctrl-C
  wrbctl counters --interval 10 --times 6 --json > minute.jsonl
  wrbctl counters --format prometheus > warrenby.prom

Exit codes: 0 done, 1 failed, 2 wrong command line, 3 there are no counters: the host does not run.
)";

struct CountersOptions {
    bool all = false;     // also commands that were never called
    double interval = 0;  // seconds between two reads; 0 reads once
    unsigned times = 0;   // number of reads with an interval; 0: until Ctrl-C
    std::string format = "table";
    bool json = false;  // the same as the format "json"
};

int ReportAttach(CounterAttach result, uint32_t error) {
    PrintErr("wrbctl: " + WideToUtf8(CounterAttachText(result)) +
             (error != 0 ? ": " + SystemText(error) : std::string()) + "\n");
    return result == CounterAttach::Missing ? kExitServiceNotRunning : kExitFailed;
}

std::string InFormat(const CountersOptions& options, const CounterLook& look, const CounterLook* earlier) {
    if (options.json || options.format == "json") {
        return CounterJson(look, earlier);
    }
    return options.format == "prometheus" ? CounterMetrics(look)
                                          : WrapText(CounterTable(look, earlier), TerminalColumns());
}

int RunCounters(const CountersOptions& options) {
    CounterReader reader;
    uint32_t error = 0;
    if (const CounterAttach result = reader.Attach(error); result != CounterAttach::Attached) {
        return ReportAttach(result, error);
    }
    std::optional<CounterLook> earlier;
    for (unsigned times = 1;; ++times) {
        CounterLook look = LookAtCounters(reader, options.all);
        PrintOut(InFormat(options, look, earlier ? &*earlier : nullptr));
        if (options.interval <= 0 || times == options.times) {
            return kExitOk;
        }
        earlier = std::move(look);
        Sleep(static_cast<DWORD>(options.interval * 1000));
    }
}

}  // namespace

void AddCounters(CLI::App& app, Run& run) {
    const auto options = std::make_shared<CountersOptions>();
    CLI::App* const counters =
        AddSubcommand(app, "counters", "Show calls and run times of each command, from shared memory", kExamples,
                      options, RunCounters, run);
    counters->add_flag("--all", options->all, "Also commands that were never called");
    CLI::Option* const interval =
        counters->add_option("--interval", options->interval, "Read again after this many seconds");
    interval->check(CLI::Range(0.1, 86400.0));
    counters->add_option("--times", options->times, "Number of reads (default: until Ctrl-C)")->needs(interval);
    counters->add_option("--format", options->format, "table; json, an object a line; or prometheus")
        ->check(CLI::IsMember({"table", "json", "prometheus"}));
    counters->add_flag("--json", options->json, "The same as --format json");
}

}  // namespace wrb
