#include "LogLevel.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "CmdProtocol.h"
#include "LogFilter.h"
#include "PipeClient.h"
#include "Polling.h"
#include "ServicePipes.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kPollMilliseconds = 10;

constexpr LogLevelRow kLevels[] = {
    {"F", LogFilterWord(kRankFatal), "fatal only"},
    {"E", LogFilterWord(kRankError), "errors"},
    {"W", LogFilterWord(kRankWarning), "errors and warnings"},
    {"I", LogFilterWord(kRankInfo), "errors, warnings and information"},
    {"D", LogFilterWord(kRankDebug), "everything, debug lines included"},
    {"all", 0, "everything: the filter is off"},
    {"none", LogFilterWord(INT16_MIN), "nothing"},
};

template <typename Value, typename Member>
const LogLevelRow* Find(const Value& value, Member member) {
    const auto* const found = std::ranges::find(kLevels, value, member);
    return found == std::end(kLevels) ? nullptr : found;
}

// The message ends with the connection.
LogLevelChange SendLevel(const LogLevelRow& row) {
    CCmdProtocol message;
    message << kLogSetLevelCommand << Utf8ToWide(row.level);
    const std::wstring text(message.Text());
    uint64_t bytes = (text.size() + 1) * sizeof(wchar_t);
    CPipeClient client;
    if (!client.Initial(kLogServicePipe)) {
        return LogLevelChange::CannotConnect;
    }
    return client.Send(text.c_str(), bytes) ? LogLevelChange::Done : LogLevelChange::CannotSend;
}

}  // namespace

std::span<const LogLevelRow> LogLevels() {
    return kLevels;
}

const LogLevelRow* FindLogLevel(std::string_view level) {
    return Find(level, &LogLevelRow::level);
}

const LogLevelRow* LogLevelOfWord(uint32_t word) {
    return Find(word, &LogLevelRow::word);
}

uint32_t CurrentLogWord() {
    return LogFilter::Shared().Word();
}

LogLevelChange ChangeLogLevel(const LogLevelRow& row, double timeoutSeconds) {
    CurrentLogWord();  // mapped before the service changes the word
    if (const LogLevelChange sent = SendLevel(row); sent != LogLevelChange::Done) {
        return sent;
    }
    const auto isChanged = [&row] { return CurrentLogWord() == row.word; };
    return PollUntil(isChanged, static_cast<uint64_t>(timeoutSeconds * 1000), kPollMilliseconds)
               ? LogLevelChange::Done
               : LogLevelChange::NotInTime;
}

}  // namespace wrb
