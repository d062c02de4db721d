#include <windows.h>

#include <string>
#include <string_view>

#include "CmdProtocol.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "JsonOutput.h"
#include "LogFilter.h"
#include "PipeClient.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kLogServicePipe[] = L"Log_ServerNamePipe";
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

int Ask(const LevelRow& row) {
    CCmdProtocol message;
    message << L"LOG_SET_LEVEL" << Utf8ToWide(row.level);
    const std::wstring text(message.Text());
    uint64_t bytes = (text.size() + 1) * sizeof(wchar_t);
    CPipeClient client;
    if (!client.Initial(kLogServicePipe)) {
        return GetLastError() == ERROR_FILE_NOT_FOUND
                   ? Fail(kExitServiceNotRunning, "the log service is not running; start wrbback serve")
                   : Fail(kExitFailed, "cannot connect to the log service");
    }
    return client.Send(text.c_str(), bytes) ? kExitOk : Fail(kExitFailed, "cannot send to the log service");
}

// The log service takes a moment to set the word after it has our message.
bool AwaitWord(uint32_t word, double timeoutSeconds) {
    const ULONGLONG deadline = GetTickCount64() + static_cast<ULONGLONG>(timeoutSeconds * 1000);
    while (CLogFilter::Shared().Word() != word) {
        if (GetTickCount64() >= deadline) {
            return false;
        }
        Sleep(kPollMilliseconds);
    }
    return true;
}

int Set(const LevelRow& row, double timeoutSeconds, bool json) {
    CLogFilter::Shared();  // mapped before the service changes the word
    if (const int code = Ask(row); code != kExitOk) {
        return code;
    }
    return AwaitWord(row.word, timeoutSeconds)
               ? Show(row.word, json)
               : Fail(kExitTimedOut, "the log service did not change the level in time");
}

}  // namespace

int RunLogLevel(const std::optional<std::string>& level, double timeoutSeconds, bool json) {
    if (!level) {
        return Show(CLogFilter::Shared().Word(), json);
    }
    for (const LevelRow& row : kLevels) {
        if (row.level == *level) {
            return Set(row, timeoutSeconds, json);
        }
    }
    return Fail(kExitUsage, "no log level " + *level + "; take F, E, W, I, D or all");
}

}  // namespace wrb
