// Builds and sends an admitted line of the debug log. Separate from DebugLog, so that a call that is filtered out does
// not pay for the stack space of a line.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace wrb {

// Builds the line and sends it to the log service or the debug library, as set up. Keeps the last error, throws
// nothing; before the first set-up it does nothing.
void WriteLogLine(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format,
                  va_list arguments) noexcept;
void WriteLogLine(uint32_t level, const wchar_t* sourceFile, uint32_t line, const char* format,
                  va_list arguments) noexcept;

}  // namespace wrb
