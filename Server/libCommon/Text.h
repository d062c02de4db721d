// Text conversion and formatting. All wide text is UTF-16. Nothing here throws but for lack of memory.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// The system's ANSI code page. Characters that it lacks become its default character ('?').
std::string WideToAnsi(std::wstring_view text);
std::wstring AnsiToWide(std::string_view text);

// Broken input becomes U+FFFD.
std::string WideToUtf8(std::wstring_view text);
std::wstring Utf8ToWide(std::string_view text);

// printf-style formatting with Microsoft's wide rules: %s is wide text, %S narrow. The result is cut at 4095
// characters.
std::wstring FormatWide(const wchar_t* format, ...);

// Formats into a buffer of `capacity` characters and always terminates it. Returns the characters written, at most
// capacity - 1. A longer result is cut. A result ends before the first text that cannot be converted.
std::size_t FormatInto(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...);
std::size_t FormatIntoV(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments);
std::size_t FormatIntoV(char* buffer, std::size_t capacity, const char* format, va_list arguments);

// The items of a list with ";" between them. Empty ones are left out.
std::vector<std::wstring> ListItems(std::wstring_view list);

// Decimal text to a signed number: leading blanks and a sign are allowed, conversion stops at the first other
// character, no digits give 0, and what does not fit is clamped to the nearest end of the range.
int32_t ParseInt32(std::wstring_view text);
int64_t ParseInt64(std::wstring_view text);

}  // namespace wrb
