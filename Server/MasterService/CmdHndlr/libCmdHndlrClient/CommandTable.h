// What the rows of the command table declare. Needs nothing to link with.
#pragma once

#include <cstdint>

class CCmdProtocol;

// The handlers that are written as functions.
#define WRB_COMMAND(name, handler, role, fields, failure, lane)
#define WRB_WRITTEN(name, function, role, fields, failure, lane) void function(CCmdProtocol& message);
#include "CommandTable.inc"

namespace wrb {

// The rows by name: a value is the row's number, which is also the command's slot in the performance counters.
enum class CommandSlot : uint32_t {
#define WRB_COMMAND(name, handler, role, fields, failure, lane) name,
#include "CommandTable.inc"
    kCount
};

// Requests for alert texts are also counted by alert type, in the last slots of the counters, which no row of the table
// uses. Types that are not listed are not counted.
struct AlertSlot {
    int32_t type;
    uint32_t slot;
};

inline constexpr AlertSlot kAlertSlots[] = {
    {0, 120}, {1, 121}, {3, 122}, {5, 123}, {7, 124}, {8, 125}, {15, 126}, {128, 127},
};

static_assert(static_cast<uint32_t>(CommandSlot::kCount) <= kAlertSlots[0].slot);

}  // namespace wrb
