// The rows of the command table by name: a value is the row's number, and so the command's slot in the performance
// counters. Needs nothing to link with.
#pragma once

#include <cstdint>

namespace wrb {

enum class CommandSlot : uint32_t {
#define WRB_COMMAND(name, handler, role, fields, answers) name,
#include "CommandTable.inc"
#undef WRB_COMMAND
    kCount
};

}  // namespace wrb
