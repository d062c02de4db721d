// From an admitted call of the debug log to a line on its way. Apart from DebugLog, so that a call that is filtered out
// does not pay for the room that a line takes on the stack.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace wrb {

// Builds the line and sends it where the set-up says. Keeps the last error, throws nothing; before the first set-up it
// does nothing.
void WriteLogLine(uint32_t level, const wchar_t* sourceFile, uint32_t line, const wchar_t* format,
                  va_list arguments) noexcept;
void WriteLogLine(uint32_t level, const wchar_t* sourceFile, uint32_t line, const char* format,
                  va_list arguments) noexcept;

}  // namespace wrb
