// Turns an exception (no memory, a malformed answer) into a log line and a failure. Each public function of the service
// clients does so once, around its whole work.
#pragma once

#include <exception>

#include "DebugLog.h"

namespace wrb {

// Runs `body`. When it throws, logs `function` with the exception's text and returns a zero of the body's type.
template <typename Body>
auto GuardCall(const wchar_t* function, Body&& body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::exception& exception) {
        WRB_LOG(kLogError, L"%s - %S", function, exception.what());
    }
    return {};
}

}  // namespace wrb
