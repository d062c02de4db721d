#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "CmdProtocol.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "JsonOutput.h"
#include "LogFilter.h"
#include "PipeClient.h"
#include "PipePath.h"
#include "ServicePipes.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr DWORD kPollMilliseconds = 10;

struct LevelRow {
    std::string_view level;
    uint32_t word;
    std::string_view meaning;
};

constexpr LevelRow kLevels[] = {
    {"F", LogFilterWord(kRankFatal), "fatal only"},
    {"E", LogFilterWord(kRankError), "errors"},
    {"W", LogFilterWord(kRankWarning), "errors and warnings"},
    {"I", LogFilterWord(kRankInfo), "errors, warnings and information"},
    {"D", LogFilterWord(kRankDebug), "everything, debug lines included"},
    {"all", 0, "everything: the filter is off"},
    {"none", LogFilterWord(INT16_MIN), "nothing"},
};

int Show(uint32_t word, bool json) {
    const LevelRow* found = nullptr;
    for (const LevelRow& row : kLevels) {
        if (row.word == word) {
            found = &row;
        }
    }
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

// Checks without connecting: the service would treat a connection as a message.
bool LogServiceRuns() {
    wchar_t path[MAX_PATH];
    return FormatPipePath(path, MAX_PATH, kLogServicePipe) &&
           (WaitNamedPipeW(path, 1) || GetLastError() != ERROR_FILE_NOT_FOUND);
}

int Ask(const LevelRow& row) {
    CCmdProtocol message;
    message << L"LOG_SET_LEVEL" << Utf8ToWide(row.level);
    const std::wstring text(message.Text());
    uint64_t bytes = (text.size() + 1) * sizeof(wchar_t);
    CPipeClient client;
    if (!client.Initial(kLogServicePipe)) {
        return FailSystem(kExitFailed, "cannot connect to the log service", GetLastError());
    }
    return client.Send(text.c_str(), bytes) ? kExitOk : Fail(kExitFailed, "cannot send to the log service");
}

// The log service sets the word some time after it has received the message.
bool AwaitWord(uint32_t word, double timeoutSeconds) {
    const ULONGLONG deadline = GetTickCount64() + static_cast<ULONGLONG>(timeoutSeconds * 1000);
    while (LogFilter::Shared().Word() != word) {
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(kPollMilliseconds);
    }
    return true;
}

int Set(const LevelRow& row, double timeoutSeconds, bool json) {
    LogFilter::Shared();  // mapped before the service changes the word
    if (const int code = Ask(row); code != kExitOk) {
        return code;
    }
    return AwaitWord(row.word, timeoutSeconds)
               ? Show(row.word, json)
               : Fail(kExitTimedOut, "the log service did not change the level in time");
}

}  // namespace

int RunLogLevel(const std::optional<std::string>& level, double timeoutSeconds, bool json) {
    const LevelRow* const row =
        std::ranges::find_if(kLevels, [&](const LevelRow& each) { return each.level == level; });
    if (level && row == std::end(kLevels)) {
        return Fail(kExitUsage, "no log level " + *level + "; take F, E, W, I, D, all or none");
    }
    // Without the service every line is lost, at every level.
    if (!LogServiceRuns()) {
        return Fail(kExitServiceNotRunning, "the log service is not running; start wrbback serve");
    }
    return level ? Set(*row, timeoutSeconds, json) : Show(LogFilter::Shared().Word(), json);
}

}  // namespace wrb
