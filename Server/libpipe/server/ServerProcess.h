// The process that answers a request.
#pragma once

#include <windows.h>

#include <memory>

#include "Handle.h"

namespace wrb {

using ProcessHandle = std::shared_ptr<const KernelHandle>;

// The process of that id, which serves a pipe, to wait for its end. The last one is kept for the next request: while a
// handle is open, no other process gets its id. Null for 0 and when the system refuses. Any thread; never throws.
ProcessHandle ServerProcess(DWORD id) noexcept;

}  // namespace wrb
