// Memory that processes share by a name.
#pragma once

#include <cstddef>

namespace wrb {

// The bytes from the start of a view that can be used. 0 when its pages are reserved only: whoever makes a section
// decides that, and a read of such a page ends the process.
std::size_t UsableBytes(const void* view) noexcept;

}  // namespace wrb
