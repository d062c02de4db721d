// The edge of the library: what throws inside (memory, a malformed answer) becomes a log line and a failure.
#pragma once

#include <exception>

#include "DebugLog.h"

namespace wrb {

// Runs `body`. When it throws, logs `function` with the exception's text and returns a zero of the body's type.
template <typename Body>
auto GuardDbCall(const wchar_t* function, Body&& body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::exception& exception) {
        WRB_LOG(kLogError, L"%s - %S", function, exception.what());
    }
    return {};
}

}  // namespace wrb
