// Who counts into which slot of the performance counters, for whoever shows them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wrb {

struct CountedRow {
    std::string name;  // ASCII
    uint32_t slot;
};

// The commands, then the alert types that have a counter of their own.
std::vector<CountedRow> CountedRows();

}  // namespace wrb
