// A command message taken apart by the command's row in the table.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "CommandCatalog.h"

namespace wrb {

// One name for each field of a row: "uid, counter 1 to counter 3" are four. Empty for a layout that is not settled or
// has no field.
std::vector<std::string> FieldNames(std::string_view layout);

struct CommandMessage {
    const CommandEntry* entry = nullptr;    // null: no command of the table
    std::vector<std::wstring_view> fields;  // the name first; they are parts of the message
    std::wstring_view name;
    std::wstring_view uid;  // empty for a command without one
};

// The text ends at its first NUL.
CommandMessage ReadCommandMessage(std::wstring_view message);

// The message with another reply pipe, for a command that answers.
std::wstring WithReplyPipe(const CommandMessage& message, std::wstring_view replyPipe);

}  // namespace wrb
