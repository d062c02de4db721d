// The dispatch of one message, and a record of it while somebody traces or records.
#pragma once

#include <cstdint>

#include "CommandMap.h"
#include "CommandTrace.h"

namespace wrb {

// For the start of the library.
void StartTrace() noexcept;

// The feed while somebody looks, else null.
TraceFeed* WatchedFeed() noexcept;

// DispatchCommand. While nobody looks, one read of the tick clock and one load more. A command that is refused or
// throws is recorded, but leaves no trace.
unsigned TracedDispatch(const CommandMap& map, const wchar_t* message, uint64_t bytes);

}  // namespace wrb
