#include "CommandCatalog.h"

#include <algorithm>

namespace wrb {
namespace {

#define WRB_COMMAND(name, handler, role, fields, failure, lane) \
    {#name, role, fields, FailureAnswer::failure, CommandLane::lane},
constexpr CommandEntry kCatalog[] = {
#include "CommandTable.inc"
};

}  // namespace

std::span<const CommandEntry> CommandCatalog() {
    return kCatalog;
}

const CommandEntry* FindCommand(std::string_view name) {
    const auto row = std::ranges::find(kCatalog, name, &CommandEntry::name);
    return row == std::end(kCatalog) ? nullptr : &*row;
}

const CommandEntry* FindCommand(std::wstring_view name) {
    const auto isNamed = [name](const CommandEntry& entry) { return std::ranges::equal(entry.name, name); };
    const auto row = std::ranges::find_if(kCatalog, isNamed);
    return row == std::end(kCatalog) ? nullptr : &*row;
}

}  // namespace wrb
