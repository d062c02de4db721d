#include <windows.h>

#include <charconv>
#include <optional>
#include <string_view>

#include "Console.h"
#include "ExitCode.h"
#include "Failure.h"
#include "FeedReader.h"
#include "LogFeed.h"
#include "LogFilter.h"
#include "LogLevel.h"
#include "Subcommands.h"
#include "Terminal.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl tail                                every line that the log service takes
  wrbctl tail --level W                      warnings and errors
  wrbctl tail --text "uid:[3f2a6c10"         of one agent
  wrbctl tail --thread 03db --count 100      the next hundred of one thread

On a console errors are red, warnings yellow, debug lines pale, unless the variable NO_COLOR is set.
Only lines that the log level admits come to the log service: 'wrbctl log-level' shows and changes it.

Exit codes: 0 done, 1 failed, 2 wrong command line, 3 the log service does not run.
)";

struct TailOptions {
    std::string level = "all";
    std::string text;
    std::string thread;  // hexadecimal, as in the lines
    uint64_t count = 0;  // 0: until Ctrl-C
};

// What a line must be like.
struct LineFilter {
    uint32_t levels = 0;  // a filter word
    std::optional<uint32_t> thread;
    std::string_view text;

    bool Admits(const FeedLine& line, std::string_view shown) const {
        return LogFilterAdmits(levels, line.level) && (!thread || line.thread == *thread) &&
               shown.find(text) != std::string_view::npos;
    }
};

// False for a level or a thread that cannot be.
bool MakeFilter(const TailOptions& options, LineFilter& filter) {
    const LogLevelRow* const row = FindLogLevel(options.level);
    filter.levels = row != nullptr ? row->word : 0;
    filter.text = options.text;
    const char* const end = options.thread.data() + options.thread.size();
    if (!options.thread.empty()) {
        uint32_t thread = 0;
        const auto [stop, error] = std::from_chars(options.thread.data(), end, thread, 16);
        if (error != std::errc() || stop != end) {
            return false;
        }
        filter.thread = thread;
    }
    return row != nullptr;
}

std::string InColourOf(uint32_t level, const std::string& text) {
    const auto rank = static_cast<LogRank>(level < kLogRanks.size() ? kLogRanks[level] : int8_t{kRankDebug});
    return rank == kRankAlways || rank == kRankInfo ? text
           : rank <= kRankError                     ? Coloured(text, Colour::Red)
                                : Coloured(text, rank == kRankWarning ? Colour::Yellow : Colour::Dim);
}

int RunTail(const TailOptions& options) {
    LineFilter filter;
    if (!MakeFilter(options, filter)) {
        return Fail(kExitUsage, "take F, E, W, I, D, all or none for --level, a hexadecimal number for --thread");
    }
    SharedLogFeed feed;
    if (!feed.Open(kLogFeedSection)) {
        return FailToOpen("the log service does not run; start wrbback serve", "cannot follow the log", GetLastError());
    }
    uint64_t shown = 0;
    FollowFeed(
        *feed, [] { PrintErr("wrbctl: following the log until Ctrl-C\n"); },
        [&](const FeedLine& line) {
            const std::string_view text(line.text, std::min<std::size_t>(line.bytes, sizeof line.text));
            if (filter.Admits(line, text)) {
                PrintOut(InColourOf(line.level, std::string(text)) + "\n");
                ++shown;
            }
            return options.count == 0 || shown < options.count;
        });
    return kExitOk;
}

}  // namespace

void AddTail(CLI::App& app, Run& run) {
    const auto options = std::make_shared<TailOptions>();
    CLI::App* const tail =
        AddSubcommand(app, "tail", "Show the lines of the debug log as they come", kExamples, options, RunTail, run);
    tail->add_option("--level", options->level, "Lines of that class and more severe ones: F, E, W, I or D");
    tail->add_option("--text", options->text, "Lines with this text");
    tail->add_option("--thread", options->thread, "Lines of the thread with this number, as the lines show it");
    tail->add_option("--count", options->count, "End after so many lines (default: at Ctrl-C)")
        ->check(CLI::Range(uint64_t{1}, uint64_t{1} << 40));
}

}  // namespace wrb
