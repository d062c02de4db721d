#include <windows.h>

#include <cstdio>
#include <ctime>

#include "CommandFilter.h"
#include "CommandTrace.h"
#include "Console.h"
#include "ExitCode.h"
#include "Failure.h"
#include "FeedReader.h"
#include "JsonText.h"
#include "SharedBlock.h"
#include "Subcommands.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl trace                               each command that the host serves
  wrbctl trace --slower-than 100             those that take more than 100 ms
  wrbctl trace --uid 3f2a6c10 --command GET  what one agent fetches
  wrbctl trace --json --count 1000 > trace.jsonl

Exit codes: 0 done, 1 failed, 2 wrong command line, 3 the host does not run.
)";

struct TraceOptions {
    CommandFilter filter;
    double slowerThan = 0;  // milliseconds
    uint64_t count = 0;     // 0: until Ctrl-C
    bool json = false;
};

double MillisecondsOf(const TracedCommand& traced) {
    return traced.microseconds / 1000.0;
}

const char* ResultOf(const TracedCommand& traced) {
    return traced.hasFailed != 0 ? "failed" : "ok";
}

std::string TextLine(const TracedCommand& traced) {
    const std::time_t seconds = traced.endMilliseconds / 1000;
    std::tm local{};
    localtime_s(&local, &seconds);
    char line[256];
    const int length = std::snprintf(
        line, sizeof line, "%02d:%02d:%02d.%03d  %-38s %-36s %9.2f %9llu %4u  %s\n", local.tm_hour, local.tm_min,
        local.tm_sec, static_cast<int>(traced.endMilliseconds % 1000), WideToUtf8(traced.command).c_str(),
        WideToUtf8(VisibleText(traced.uid)).c_str(), MillisecondsOf(traced),
        static_cast<unsigned long long>(traced.answerBytes), traced.requests, ResultOf(traced));
    return std::string(line, std::min<std::size_t>(static_cast<std::size_t>(length), sizeof line - 1));
}

std::string JsonRecord(const TracedCommand& traced) {
    Json::Value row;
    row["time"] = static_cast<Json::Int64>(traced.endMilliseconds);
    row["command"] = WideToUtf8(traced.command);
    row["uid"] = WideToUtf8(traced.uid);
    row["ms"] = MillisecondsOf(traced);
    row["answerBytes"] = static_cast<Json::UInt64>(traced.answerBytes);
    row["databaseRequests"] = traced.requests;
    row["result"] = ResultOf(traced);
    return JsonLine(row) + "\n";
}

constexpr char kHeads[] =
    "time          command                                uid                                         ms     bytes   db"
    "  result\n";

int RunTrace(const TraceOptions& options) {
    SharedBlock<TraceFeed> feed;
    if (!feed.Open(kTraceSection)) {
        return FailToOpen("the host does not run; start wrbhost", "cannot trace commands", GetLastError());
    }
    uint64_t shown = 0;
    FollowFeed(
        *feed, [&] { options.json ? PrintErr("wrbctl: tracing until Ctrl-C\n") : PrintOut(kHeads); },
        [&](TracedCommand traced) {
            *std::rbegin(traced.command) = *std::rbegin(traced.uid) = L'\0';
            if (options.filter.Admits(traced.command, traced.uid) && MillisecondsOf(traced) >= options.slowerThan) {
                PrintOut(options.json ? JsonRecord(traced) : TextLine(traced));
                ++shown;
            }
            return options.count == 0 || shown < options.count;
        });
    return kExitOk;
}

}  // namespace

void AddTrace(CLI::App& app, Run& run) {
    const auto options = std::make_shared<TraceOptions>();
    CLI::App* const trace =
        AddSubcommand(app, "trace", "Show each command as it ends", kExamples, options, RunTrace, run);
    AddFilter(*trace, options->filter);
    trace->add_option("--slower-than", options->slowerThan, "Commands that take so many milliseconds or more")
        ->check(CLI::Range(0.0, 86'400'000.0));
    trace->add_option("--count", options->count, "End after so many commands (default: at Ctrl-C)")
        ->check(CLI::Range(uint64_t{1}, uint64_t{1} << 40));
    trace->add_flag("--json", options->json, "Print a JSON object a line");
}

}  // namespace wrb
