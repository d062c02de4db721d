// How long the body of a POST may be, as the server's INI files say.
#pragma once

#include <cstdint>

#include "Gateway.h"

namespace wrb {

// In bytes, at most 1 GiB whatever the file says; a negative number there counts as the built-in 5120 KiB, and so does
// what cannot be read. The files are read at every call: a process serves one request and asks once.
int32_t PostSizeLimit(IGateway& gateway);

}  // namespace wrb
