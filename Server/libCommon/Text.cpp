#include "Text.h"

#include <windows.h>

#include <algorithm>
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

// `print` is of the family with the leading underscore, which reads %s as wide in a wide format on every Windows
// compiler. A negative count: the text was cut or cannot be converted. Then the buffer may lack a terminator, and old
// content would follow the new text. So it is filled with zeros and formatted again.
template <typename Character, typename Print>
std::size_t FormatWith(Print print, Character* buffer, std::size_t capacity, const Character* format,
                       va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    int written = print(buffer, capacity - 1, format, arguments);
    buffer[capacity - 1] = 0;
    if (written < 0) {
        std::fill_n(buffer, capacity, Character{});
        print(buffer, capacity - 1, format, again);
        written = static_cast<int>(std::char_traits<Character>::length(buffer));
    }
    va_end(again);
    return static_cast<std::size_t>(written);
}

// Conversion stops at the first character that is no digit; what does not fit is clamped.
int64_t ParseClamped(std::wstring_view text, int64_t lowest, int64_t highest) {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == L' ' || (text[i] >= L'\t' && text[i] <= L'\r'))) {
        ++i;
    }
    const bool negative = i < text.size() && text[i] == L'-';
    if (i < text.size() && (text[i] == L'-' || text[i] == L'+')) {
        ++i;
    }
    int64_t value = 0;
    for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
        const int digit = text[i] - L'0';
        if (negative) {
            value = value < (lowest + digit) / 10 ? lowest : value * 10 - digit;
        } else {
            value = value > (highest - digit) / 10 ? highest : value * 10 + digit;
        }
    }
    return value;
}

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

std::size_t FormatIntoV(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments) {
    return FormatWith([](auto... rest) { return _vsnwprintf(rest...); }, buffer, capacity, format, arguments);
}

std::size_t FormatIntoV(char* buffer, std::size_t capacity, const char* format, va_list arguments) {
    return FormatWith([](auto... rest) { return _vsnprintf(rest...); }, buffer, capacity, format, arguments);
}

std::vector<std::wstring> ListItems(std::wstring_view list) {
    std::vector<std::wstring> items;
    for (std::size_t at = 0; at < list.size();) {
        const std::size_t end = std::min(list.find(L';', at), list.size());
        if (end > at) {
            items.emplace_back(list.substr(at, end - at));
        }
        at = end + 1;
    }
    return items;
}

int32_t ParseInt32(std::wstring_view text) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(ParseClamped(text, Limits::min(), Limits::max()));
}

int64_t ParseInt64(std::wstring_view text) {
    using Limits = std::numeric_limits<int64_t>;
    return ParseClamped(text, Limits::min(), Limits::max());
}

}  // namespace wrb
