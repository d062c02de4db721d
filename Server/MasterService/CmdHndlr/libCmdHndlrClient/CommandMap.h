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

// Ordered by UTF-16 code units, case-sensitive. Filled at start-up, then read by any number of threads without a lock.
using CommandMap = std::map<std::wstring, const CommandRow*, std::less<>>;

// Adds the rows, which must outlive the map. A name that is already there keeps its row.
void AddCommands(CommandMap& map, std::span<const CommandRow> rows);

// cmdhl_Process with that map.
unsigned DispatchCommand(const CommandMap& map, const wchar_t* message, uint64_t bytes);

}  // namespace wrb
