#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "Console.h"
#include "Failure.h"
#include "JsonText.h"
#include "LogLevel.h"
#include "ServedPipe.h"
#include "ServicePipes.h"
#include "Subcommands.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl log-level                           the level in effect
  wrbctl log-level W                         errors and warnings only

Exit codes: 0 done, 1 failed, 2 wrong command line or no such level, 3 the log service does not run, 4 timed out.
)";

struct LogLevelOptions {
    std::optional<std::string> level;  // nothing: show it
    double timeoutSeconds = 10;
    bool json = false;
};

int Show(uint32_t word, bool json) {
    const LogLevelRow* const found = LogLevelOfWord(word);
    const std::string level(found == nullptr ? "custom" : found->level);
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08x", word);
    if (json) {
        Json::Value result;
        result["level"] = level;
        result["word"] = word;
        PrintJson(result);
    } else {
        PrintOut(level + "  (" + std::string(found == nullptr ? "a threshold of its own" : found->meaning) +
                 ", filter word " + hex + ")\n");
    }
    return kExitOk;
}

int Set(const LogLevelRow& row, double timeoutSeconds, bool json) {
    switch (ChangeLogLevel(row, timeoutSeconds)) {
        case LogLevelChange::CannotConnect:
            return FailSystem(kExitFailed, "cannot connect to the log service", GetLastError());
        case LogLevelChange::CannotSend:
            return Fail(kExitFailed, "cannot send to the log service");
        case LogLevelChange::NotInTime:
            return Fail(kExitTimedOut, "the log service did not change the level in time");
        default:
            return Show(row.word, json);
    }
}

int RunLogLevel(const LogLevelOptions& options) {
    const LogLevelRow* const row = options.level ? FindLogLevel(*options.level) : nullptr;
    if (options.level && row == nullptr) {
        return Fail(kExitUsage, "no log level " + *options.level + "; take F, E, W, I, D, all or none");
    }
    // Without the service every line is lost, at every level.
    if (!IsServed(kLogServicePipe)) {
        return Fail(kExitServiceNotRunning, "the log service is not running; start wrbback serve");
    }
    return row != nullptr ? Set(*row, options.timeoutSeconds, options.json) : Show(CurrentLogWord(), options.json);
}

}  // namespace

void AddLogLevel(CLI::App& app, Run& run) {
    const auto options = std::make_shared<LogLevelOptions>();
    CLI::App* const level =
        AddSubcommand(app, "log-level", "Show the debug log's filter, or make the log service change it", kExamples,
                      options, RunLogLevel, run);
    level->add_option("level", options->level, "F, E, W, I or D: lines up to that level are written; all or none");
    AddTimeout(*level, options->timeoutSeconds);
    level->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
