// The body of a POST: announced by "CONTENT_LENGTH", bounded, and read in one piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Gateway.h"
#include "PostSizeLimit.h"

namespace wrb {

enum class BodyState {
    Absent,    // no length announced, or 0, or no number
    TooLong,   // beyond the limit, or negative: nothing has been read
    NoMemory,  // nothing has been read
    Cut,       // the input ended before the announced length; `size` bytes are there
    Whole,
};

struct tagRequestBody {
    BodyState state = BodyState::Absent;
    std::unique_ptr<char[]> bytes;  // and a terminator
    std::size_t size = 0;
};

// The length that a text announces: an optional minus sign and digits and nothing else; numbers beyond 64 bits count as
// the outermost. Any other text counts as 0.
int64_t ParseContentLength(std::string_view text) noexcept;

// Nothing is allocated before the announced length has been found within the limit. What goes wrong is logged in the
// name of `function`.
tagRequestBody ReadRequestBody(IGateway& gateway, CPostSizeLimit& limit, const wchar_t* function);

}  // namespace wrb
