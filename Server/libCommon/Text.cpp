#include "Text.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <limits>

namespace wrb {
namespace {

std::string Narrow(UINT codePage, std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes > 0 ? bytes : 0), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

std::wstring Widen(UINT codePage, std::string_view text) {
    const int length = static_cast<int>(text.size());
    const int characters = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(characters > 0 ? characters : 0), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), length, result.data(), characters);
    return result;
}

constexpr std::size_t kFormattedLimit = 4096;

}  // namespace

std::string WideToAnsi(std::wstring_view text) {
    return Narrow(CP_ACP, text);
}

std::wstring AnsiToWide(std::string_view text) {
    return Widen(CP_ACP, text);
}

std::string WideToUtf8(std::wstring_view text) {
    return Narrow(CP_UTF8, text);
}

std::wstring Utf8ToWide(std::string_view text) {
    return Widen(CP_UTF8, text);
}

std::wstring FormatWide(const wchar_t* format, ...) {
    wchar_t buffer[kFormattedLimit];
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = FormatIntoV(buffer, kFormattedLimit, format, arguments);
    va_end(arguments);
    return std::wstring(buffer, length);
}

std::size_t FormatInto(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::size_t length = FormatIntoV(buffer, capacity, format, arguments);
    va_end(arguments);
    return length;
}

// The family with the leading underscore reads %s as wide in a wide format on every Windows compiler; it reports a cut
// with a negative count and then leaves the buffer without a terminator.
std::size_t FormatIntoV(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments) {
    const int written = _vsnwprintf(buffer, capacity - 1, format, arguments);
    buffer[capacity - 1] = L'\0';
    return written < 0 ? std::wcslen(buffer) : static_cast<std::size_t>(written);
}

std::size_t FormatIntoV(char* buffer, std::size_t capacity, const char* format, va_list arguments) {
    const int written = _vsnprintf(buffer, capacity - 1, format, arguments);
    buffer[capacity - 1] = '\0';
    return written < 0 ? std::char_traits<char>::length(buffer) : static_cast<std::size_t>(written);
}

int32_t ParseInt32(std::wstring_view text) {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == L' ' || (text[i] >= L'\t' && text[i] <= L'\r'))) {
        ++i;
    }
    const bool negative = i < text.size() && text[i] == L'-';
    if (i < text.size() && (text[i] == L'-' || text[i] == L'+')) {
        ++i;
    }
    const int64_t limit = negative ? -static_cast<int64_t>(std::numeric_limits<int32_t>::min())
                                   : static_cast<int64_t>(std::numeric_limits<int32_t>::max());
    int64_t value = 0;
    for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
        value = value * 10 + (text[i] - L'0');
        if (value > limit) {
            value = limit;
        }
    }
    return static_cast<int32_t>(negative ? -value : value);
}

}  // namespace wrb
