// The dispatch of one message, and a record of it while somebody looks.
#pragma once

#include <cstdint>

#include "CommandMap.h"
#include "CommandTrace.h"

namespace wrb {

// For the start of the library.
void StartTrace() noexcept;

// The feed while somebody looks, else null.
TraceFeed* WatchedFeed() noexcept;

// DispatchCommand. While nobody looks, one read of the tick clock more. A command that throws leaves no record.
unsigned TracedDispatch(const CommandMap& map, const wchar_t* message, uint64_t bytes);

}  // namespace wrb
