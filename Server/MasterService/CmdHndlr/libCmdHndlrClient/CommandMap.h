// From a command's name to its handler, and the dispatch of one message.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>

class CCmdProtocol;

namespace wrb {

using CommandHandler = void (*)(CCmdProtocol& message);

struct CommandRow {
    const wchar_t* name;
    CommandHandler handler;  // null: known, but not built
};

// Ordered by UTF-16 code units, upper and lower case apart. Filled at start-up; from then on any number of threads
// reads it without a lock.
using CommandMap = std::map<std::wstring, CommandHandler, std::less<>>;

// Adds the rows in their order. A name that is there already keeps its handler.
void AddCommands(CommandMap& map, std::span<const CommandRow> rows);

// Runs the handler of the command that `message` holds; see cmdhl_Process for the message and the result. What the
// handler throws passes through.
unsigned DispatchCommand(const CommandMap& map, const wchar_t* message, uint64_t bytes);

}  // namespace wrb
