// The wide string functions for 16-bit characters: those of the C library here take 32 bits.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <string_view>

#include "windows.h"

static_assert(sizeof(wchar_t) == 2);

namespace {

// One conversion of a printf format, as narrow text for the C library.
struct Conversion {
    std::string flags;
    int width = -1;
    int precision = -1;
    bool wideLength = false;   // 64 bits
    bool otherLength = false;  // h or l: the other kind of text
    wchar_t kind = 0;
};

int TakeNumber(const wchar_t*& format, va_list* arguments) {
    if (*format == L'*') {
        ++format;
        return va_arg(*arguments, int);
    }
    int number = 0;
    for (; *format >= L'0' && *format <= L'9'; ++format) {
        number = number * 10 + (*format - L'0');
    }
    return number;
}

Conversion TakeConversion(const wchar_t*& format, va_list* arguments, bool microsoft) {
    Conversion result;
    for (; *format != 0 && std::string_view("-+ #0").find(static_cast<char>(*format)) != std::string_view::npos;
         ++format) {
        result.flags += static_cast<char>(*format);
    }
    result.width = TakeNumber(format, arguments);
    if (*format == L'.') {
        result.precision = TakeNumber(++format, arguments);
    }
    if (std::wstring_view(format).starts_with(L"I64")) {
        format += 3;
        result.wideLength = true;
    }
    for (; *format == L'l' || *format == L'h' || *format == L'w'; ++format) {
        // Microsoft's long has 32 bits.
        result.wideLength = *format == L'l' && (!microsoft || result.otherLength);
        result.otherLength = true;
    }
    result.kind = *format != 0 ? *format++ : L'%';
    return result;
}

void AppendNumber(std::wstring& out, const Conversion& conversion, va_list* arguments) {
    const std::string format =
        "%" + conversion.flags + "*.*" + (conversion.wideLength ? "ll" : "") + static_cast<char>(conversion.kind);
    char text[128];
    const int length = conversion.wideLength ? std::snprintf(text, sizeof text, format.c_str(), conversion.width,
                                                             conversion.precision, va_arg(*arguments, long long))
                                             : std::snprintf(text, sizeof text, format.c_str(), conversion.width,
                                                             conversion.precision, va_arg(*arguments, int));
    out.append(text, text + std::clamp<int>(length, 0, sizeof text - 1));
}

template <typename Character>
void AppendText(std::wstring& out, const Conversion& conversion, const Character* text) {
    const auto most = static_cast<std::size_t>(conversion.precision);
    for (std::size_t i = 0; i < most && text[i] != 0; ++i) {
        out += static_cast<wchar_t>(static_cast<std::make_unsigned_t<Character>>(text[i]));
    }
}

void AppendConversion(std::wstring& out, const Conversion& conversion, va_list* arguments, bool microsoft) {
    switch (conversion.kind) {
        case L'%':
            out += L'%';
            break;
        case L'c':
            out += static_cast<wchar_t>(va_arg(*arguments, int));
            break;
        case L's':
        case L'S': {
            const bool wide = microsoft ? conversion.kind == L's' : conversion.kind == L'S' || conversion.otherLength;
            if (wide) {
                AppendText(out, conversion, va_arg(*arguments, const wchar_t*));
            } else {
                AppendText(out, conversion, va_arg(*arguments, const char*));
            }
            break;
        }
        default:
            AppendNumber(out, conversion, arguments);
    }
}

int Print(wchar_t* buffer, std::size_t room, const wchar_t* format, va_list arguments, bool microsoft) {
    va_list rest;
    va_copy(rest, arguments);
    std::wstring out;
    while (*format != 0) {
        if (*format++ != L'%') {
            out += format[-1];
        } else {
            AppendConversion(out, TakeConversion(format, &rest, microsoft), &rest, microsoft);
        }
    }
    va_end(rest);
    std::copy_n(out.c_str(), std::min(out.size() + 1, room), buffer);
    // Without room for the terminator Microsoft's function still succeeds.
    return out.size() + (microsoft ? 0 : 1) > room ? -1 : static_cast<int>(out.size());
}

}  // namespace

extern "C" {

std::size_t wcsnlen(const wchar_t* text, std::size_t most) noexcept {
    std::size_t length = 0;
    while (length < most && text[length] != 0) {
        ++length;
    }
    return length;
}

std::size_t wcslen(const wchar_t* text) noexcept {
    return wcsnlen(text, SIZE_MAX);
}

int wmemcmp(const wchar_t* left, const wchar_t* right, std::size_t count) noexcept {
    const auto [a, b] = std::mismatch(left, left + count, right);
    return a == left + count ? 0 : *a - *b;
}

int wcsncmp(const wchar_t* left, const wchar_t* right, std::size_t count) noexcept {
    return wmemcmp(left, right, std::min({count, wcsnlen(left, count) + 1, wcsnlen(right, count) + 1}));
}

int wcscmp(const wchar_t* left, const wchar_t* right) noexcept {
    return wcsncmp(left, right, SIZE_MAX);
}

wchar_t* wmemchr(const wchar_t* text, wchar_t wanted, std::size_t count) noexcept {
    const wchar_t* const found = std::find(text, text + count, wanted);
    return found == text + count ? nullptr : const_cast<wchar_t*>(found);
}

wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, std::size_t count) noexcept {
    return static_cast<wchar_t*>(std::memcpy(to, from, count * sizeof(wchar_t)));
}

wchar_t* wmemmove(wchar_t* to, const wchar_t* from, std::size_t count) noexcept {
    return static_cast<wchar_t*>(std::memmove(to, from, count * sizeof(wchar_t)));
}

wchar_t* wmemset(wchar_t* to, wchar_t character, std::size_t count) noexcept {
    return std::fill_n(to, count, character) - count;
}

unsigned long long wcstoull(const wchar_t* text, wchar_t** end, int base) noexcept {
    std::string narrow;
    for (const wchar_t* next = text; *next != 0 && *next < 0x80; ++next) {
        narrow += static_cast<char>(*next);
    }
    char* narrowEnd = nullptr;
    const unsigned long long number = std::strtoull(narrow.c_str(), &narrowEnd, base);
    if (end != nullptr) {
        *end = const_cast<wchar_t*>(text) + (narrowEnd - narrow.c_str());
    }
    return number;
}

unsigned long wcstoul(const wchar_t* text, wchar_t** end, int base) noexcept {
    return wcstoull(text, end, base);
}

int vswprintf(wchar_t* buffer, std::size_t room, const wchar_t* format, va_list arguments) noexcept {
    return Print(buffer, room, format, arguments, false);
}

}  // extern "C"

uint64_t _wcstoui64(const wchar_t* text, wchar_t** end, int base) noexcept {
    return wcstoull(text, end, base);
}

int _vsnwprintf(wchar_t* buffer, std::size_t room, const wchar_t* format, va_list arguments) noexcept {
    return Print(buffer, room, format, arguments, true);
}
