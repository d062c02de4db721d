// From a command's name to its row of the command table, and the dispatch of one message.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

#include "CommandHandler.h"

namespace wrb {

struct CommandRow {
    const wchar_t* name;
    CommandSlot slot;
    CommandHandler handler;
};

// The command table.
std::span<const CommandRow> CommandTable();

// Ordered by UTF-16 code units, upper and lower case apart. Filled at start-up; from then on any number of threads
// reads it without a lock.
using CommandMap = std::map<std::wstring, const CommandRow*, std::less<>>;

// Adds the rows, which must outlive the map, in their order. A name that is there already keeps its row.
void AddCommands(CommandMap& map, std::span<const CommandRow> rows);

// Runs the handler of the command that `message` holds; see cmdhl_Process for the message and the result. What the
// handler throws passes through.
unsigned DispatchCommand(const CommandMap& map, const wchar_t* message, uint64_t bytes);

}  // namespace wrb
