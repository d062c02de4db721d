// The table of an agent's plain values.
#pragma once

#include <span>

#include "SeedFile.h"

namespace wrb {

std::span<const AgentColumn> AgentColumns();

}  // namespace wrb
