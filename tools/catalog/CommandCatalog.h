// The library's command table as data for people: what each command does and what it takes.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace wrb {

// The answer of a command that cannot be carried out. None: the command has no answer at all.
enum class FailureAnswer { None, Empty, Zero };

// Commands that wait in one queue of the host.
enum class CommandLane { Quick, Database, Upload };

struct CommandEntry {
    std::string_view name;
    std::string_view role;
    std::string_view fields;  // after the name, in order
    FailureAnswer failure;
    CommandLane lane;

    // Whether it takes a reply pipe in field 1 and answers on it.
    constexpr bool Answers() const { return failure != FailureAnswer::None; }
};

// In the table's order, which is also the order of the counter slots.
std::span<const CommandEntry> CommandCatalog();

// Null for a name that the table does not have.
const CommandEntry* FindCommand(std::string_view name);
const CommandEntry* FindCommand(std::wstring_view name);

}  // namespace wrb
