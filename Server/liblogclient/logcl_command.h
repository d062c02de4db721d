// The commands of the log service's client.
#pragma once

#include <cstdint>
#include <string_view>

#include "ExternalLog.h"

inline constexpr wchar_t kLogWriteCommand[] = L"LOG_WRITE";

namespace wrb {

// One admitted line. The texts are zero-terminated.
struct LogLine {
    int32_t seconds;   // since 1970-01-01 00:00 UTC, in the wire's 32 bits
    uint32_t process;  // id
    uint32_t thread;   // id
    uint32_t level;    // as the caller gave it
    const wchar_t* sourceFile;
    uint32_t line;
    const wchar_t* text;
};

}  // namespace wrb

// "LOG_WRITE": sends the line's fields in the order above, as one message with its terminating zero. The text is the
// last field and may itself hold TABs. Returns 1 when the message was written, else 0 with the cause in GetLastError:
// ERROR_SEM_TIMEOUT when the service did not take the message within `milliseconds`.
//
// Without the service (its pipe does not exist) the line is lost. Unless `external` is null, it gets a note of that
// once in a process, and one of every other failure. Throws only when memory is exhausted.
int logcl_Write(const wrb::LogLine& line, const wrb::IExternalLog* external, uint32_t milliseconds);
