// The level of the debug log: one word for all processes, which the log service sets when it is asked to.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace wrb {

// The message to the log service that sets the level, its one field.
inline constexpr wchar_t kLogSetLevelCommand[] = L"LOG_SET_LEVEL";

struct LogLevelRow {
    std::string_view level;  // as in kLogSetLevelCommand
    uint32_t word;           // the filter word
    std::string_view meaning;
};

// From the fewest lines to all, then none.
std::span<const LogLevelRow> LogLevels();

// Null for a level, or a word, that is none of them.
const LogLevelRow* FindLogLevel(std::string_view level);
const LogLevelRow* LogLevelOfWord(uint32_t word);

uint32_t CurrentLogWord();

enum class LogLevelChange : uint8_t {
    Done,
    CannotConnect,  // GetLastError tells
    CannotSend,
    NotInTime,  // the service has the message and did not change the word
};

// Waits until the word has changed: the log service sets it some time after it has received the message.
LogLevelChange ChangeLogLevel(const LogLevelRow& row, double timeoutSeconds);

}  // namespace wrb
