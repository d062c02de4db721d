// The body of a POST: announced by "CONTENT_LENGTH", bounded, and read in one piece.
#pragma once

#include <cstddef>
#include <memory>

#include "Gateway.h"

namespace wrb {

enum class BodyState {
    Absent,    // no length announced, or 0, or no number
    TooLong,   // beyond the limit, or negative: nothing has been read
    NoMemory,  // nothing has been read
    Cut,       // the input ended before the announced length; `size` bytes are there
    Whole,
};

struct RequestBody {
    BodyState state = BodyState::Absent;
    std::unique_ptr<char[]> bytes;  // and a terminator
    std::size_t size = 0;
};

// Nothing is allocated before the announced length has been found within the limit. A length is an optional minus sign
// and digits and nothing else; one beyond 64 bits counts as the outermost. What goes wrong is logged in the
// name of `function`.
RequestBody ReadRequestBody(IGateway& gateway, const wchar_t* function);

}  // namespace wrb
