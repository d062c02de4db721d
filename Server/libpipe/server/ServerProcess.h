// The process that answers a request.
#pragma once

#include <memory>

#include "Handle.h"
#include "PipeClient.h"

namespace wrb {

using ProcessHandle = std::shared_ptr<const KernelHandle>;

// The process that serves the client's open pipe, to wait for its end. The last one is kept for the next request: while
// a handle is open, no other process gets its id. Null when the system does not tell or refuses. Any thread; never
// throws.
ProcessHandle ServerProcess(const CPipeClient& client) noexcept;

}  // namespace wrb
