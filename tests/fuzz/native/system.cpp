// The calls that windows.h here declares.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

#include "windows.h"

namespace {

thread_local DWORD t_lastError = 0;

constexpr char32_t kReplacement = 0xFFFD;

// The next character of UTF-8; anything broken consumes one byte.
char32_t TakeUtf8(std::string_view& text, bool& broken) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t character = length < 2 ? first : first & (0xFF >> (length + 1));
    bool good = length != 0 && first < 0xF5 && length <= text.size();
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (text[i] & 0xC0) == 0x80;
        character = character << 6 | (text[i] & 0x3F);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    good = good && character >= kLeast[length] && character <= 0x10FFFF && (character & 0xFFFFF800) != 0xD800;
    text.remove_prefix(good ? length : 1);
    broken |= !good;
    return good ? character : kReplacement;
}

char32_t TakeUtf16(std::wstring_view& text) {
    const char32_t first = text.front();
    const char32_t second = text.size() > 1 ? text[1] : 0;
    const bool pair = (first & 0xFC00) == 0xD800 && (second & 0xFC00) == 0xDC00;
    text.remove_prefix(pair ? 2 : 1);
    return pair                         ? 0x10000 + ((first & 0x3FF) << 10 | (second & 0x3FF))
           : (first & 0xF800) == 0xD800 ? kReplacement
                                        : first;
}

void AppendUtf16(std::wstring& out, char32_t character) {
    if (character >= 0x10000) {
        out += static_cast<wchar_t>(0xD7C0 + (character >> 10));
        character = 0xDC00 | (character & 0x3FF);
    }
    out += static_cast<wchar_t>(character);
}

void AppendUtf8(std::string& out, char32_t character) {
    if (character < 0x80) {
        out += static_cast<char>(character);
        return;
    }
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr int kLead[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLead[more] | static_cast<int>(character >> (6 * more)));
    for (int i = more - 1; i >= 0; --i) {
        out += static_cast<char>(0x80 | (static_cast<int>(character >> (6 * i)) & 0x3F));
    }
}

// As both conversions do it: the length when there is no room asked for, 0 when the room is too small.
template <typename Character>
int HandOut(const std::basic_string<Character>& text, Character* to, int room) {
    const int length = static_cast<int>(text.size());
    if (room == 0) {
        return length;
    }
    std::copy_n(text.data(), std::min(length, room), to);
    SetLastError(length > room ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS);
    return length > room ? 0 : length;
}

wchar_t Capital(wchar_t letter) {
    return letter >= L'a' && letter <= L'z' ? static_cast<wchar_t>(letter - 0x20) : letter;
}

}  // namespace

DWORD GetLastError() noexcept {
    return t_lastError;
}

void SetLastError(DWORD error) noexcept {
    t_lastError = error;
}

DWORD GetTickCount() noexcept {
    using namespace std::chrono;
    return static_cast<DWORD>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* read, void*) noexcept {
    auto& memory = *static_cast<MemoryFile*>(file);
    *read = static_cast<DWORD>(std::min<std::size_t>(bytes, memory.size - memory.position));
    std::copy_n(memory.bytes + memory.position, *read, static_cast<uint8_t*>(buffer));
    memory.position += *read;
    return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG*, DWORD) noexcept {
    static_cast<MemoryFile*>(file)->position = static_cast<std::size_t>(distance);
    return static_cast<DWORD>(distance);
}

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int bytes, wchar_t* wide, int room) noexcept {
    std::wstring result;
    bool broken = false;
    for (std::string_view rest(text, static_cast<std::size_t>(bytes)); !rest.empty();) {
        if (codePage == CP_UTF8) {
            AppendUtf16(result, TakeUtf8(rest, broken));
        } else {
            result += static_cast<unsigned char>(rest.front());
            rest.remove_prefix(1);
        }
    }
    return broken && (flags & MB_ERR_INVALID_CHARS) != 0 ? 0 : HandOut(result, wide, room);
}

int WideCharToMultiByte(UINT codePage, DWORD, const wchar_t* text, int characters, char* narrow, int room, const char*,
                        BOOL*) noexcept {
    std::string result;
    for (std::wstring_view rest(text, static_cast<std::size_t>(characters)); !rest.empty();) {
        const char32_t character = TakeUtf16(rest);
        if (codePage == CP_UTF8) {
            AppendUtf8(result, character);
        } else {
            result += character < 0x100 ? static_cast<char>(character) : '?';
        }
    }
    return HandOut(result, narrow, room);
}

int CompareStringOrdinal(const wchar_t* left, int leftLength, const wchar_t* right, int rightLength,
                         BOOL ignoreCase) noexcept {
    const auto view = [](const wchar_t* text, int length) {
        return length < 0 ? std::wstring_view(text) : std::wstring_view(text, static_cast<std::size_t>(length));
    };
    const auto order = [ignoreCase](wchar_t a, wchar_t b) {
        return ignoreCase != FALSE ? Capital(a) <=> Capital(b) : a <=> b;
    };
    const std::wstring_view a = view(left, leftLength);
    const std::wstring_view b = view(right, rightLength);
    const auto result = std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(), order);
    return result < 0 ? CSTR_LESS_THAN : result > 0 ? CSTR_GREATER_THAN : CSTR_EQUAL;
}

int _vsnprintf(char* buffer, std::size_t room, const char* format, va_list arguments) noexcept {
    const int length = std::vsnprintf(buffer, room, format, arguments);
    return length >= static_cast<int>(room) ? -1 : length;
}

int localtime_s(std::tm* local, const std::time_t* seconds) noexcept {
    if (*seconds < 0) {
        std::memset(local, 0xFF, sizeof *local);
        return 22;
    }
    return localtime_r(seconds, local) != nullptr ? 0 : 22;
}
