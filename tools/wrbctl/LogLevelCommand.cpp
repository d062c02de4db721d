#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "JsonOutput.h"
#include "LogLevel.h"

namespace wrb {
namespace {

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

}  // namespace

int RunLogLevel(const std::optional<std::string>& level, double timeoutSeconds, bool json) {
    const LogLevelRow* const row = level ? FindLogLevel(*level) : nullptr;
    if (level && row == nullptr) {
        return Fail(kExitUsage, "no log level " + *level + "; take F, E, W, I, D, all or none");
    }
    // Without the service every line is lost, at every level.
    if (!LogServiceRuns()) {
        return Fail(kExitServiceNotRunning, "the log service is not running; start wrbback serve");
    }
    return row != nullptr ? Set(*row, timeoutSeconds, json) : Show(CurrentLogWord(), json);
}

}  // namespace wrb
