// The library's command table as data for people: what each command does and what it takes.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace wrb {

struct CommandEntry {
    std::string_view name;
    std::string_view role;
    std::string_view fields;  // after the name, in order
    bool answers;             // takes a reply pipe in field 1 and answers on it
    bool built;               // false: the library knows the name and answers nothing
};

// In the table's order, which is also the order of the counter slots.
std::span<const CommandEntry> CommandCatalog();

const CommandEntry* FindCommand(std::string_view name);

}  // namespace wrb
