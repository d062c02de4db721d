// Turns an exception (no memory, a malformed answer) into a log line and a failure. Each public function of the service
// clients does so once, around its whole work.
#pragma once

#include <cstdint>
#include <exception>

#include "DebugLog.h"

namespace wrb {

// The line of a source file that calls a service; a failure is logged in its name.
struct SourcePlace {
    const wchar_t* file;
    uint32_t line;
};

#define WRB_HERE (wrb::SourcePlace{WRB_SOURCE_FILE, __LINE__})

// Runs `body`. When it throws, logs `function` with the exception's text and returns a zero of the body's type.
template <typename Body>
auto GuardCall(SourcePlace from, const wchar_t* function, Body&& body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::exception& exception) {
        WRB_LOG_FROM(kLogError, from.file, from.line, L"%s - %S", function, exception.what());
    }
    return {};
}

}  // namespace wrb
