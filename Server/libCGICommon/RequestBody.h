// The body of a POST: announced by "CONTENT_LENGTH", bounded, and read in one piece.
#pragma once

#include <cstddef>
#include <memory>

#include "Gateway.h"
#include "cgi_GetParameter.h"

namespace wrb {

struct RequestBody {
    // kCgiFetched, or why the body is not whole. A cut body holds the bytes that came; the others hold none.
    CgiStatus status = kCgiMultipartNoLength;
    std::unique_ptr<char[]> bytes;  // and a terminator
    std::size_t size = 0;
};

// Nothing is allocated before the announced length has been found within the limit. A length is an optional minus sign
// and digits; one beyond 64 bits is clamped. Failures are logged in the name of `function`.
RequestBody ReadRequestBody(IGateway& gateway, const wchar_t* function);

}  // namespace wrb
