// The inner loop of every cached read: from the caller's text to the narrow key.
#pragma once

namespace wrb {

// Copies a text without its terminator to the memory from `to` to `end`. Returns where the copy ends. Null when it does
// not fit, and for a wide text also when a character is not ASCII: only that is the same in every ANSI code page. A
// null text is an empty one. Memory up to `end` may be overwritten beyond the copy.
char* CopyPlain(char* to, const char* end, const char* text) noexcept;
char* CopyPlain(char* to, const char* end, const wchar_t* text) noexcept;

}  // namespace wrb
