// How agents are named: by a GUID text without braces, in upper or lower case.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <string>
#include <string_view>

namespace wrb {

// How many characters of a uid count, unless a function says otherwise.
inline constexpr std::size_t kUidCharacters = 36;

// A uid as requests and sections carry it: a longer text is cut, null counts as empty.
inline std::wstring CutUid(const wchar_t* uid) {
    return uid == nullptr ? std::wstring() : std::wstring(uid, wcsnlen(uid, kUidCharacters));
}

// The form of a uid; x is a hexadecimal digit.
inline constexpr std::string_view kUidForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

inline bool HasUidForm(std::wstring_view text) noexcept {
    return std::ranges::equal(text, kUidForm, [](wchar_t character, char form) {
        const bool isLetter = (character >= L'a' && character <= L'f') || (character >= L'A' && character <= L'F');
        return form == '-' ? character == L'-' : isLetter || (character >= L'0' && character <= L'9');
    });
}

// The same text for every spelling of a uid: its letters A to Z in lower case.
inline std::wstring FoldedUid(std::wstring_view uid) {
    std::wstring folded(uid);
    for (wchar_t& character : folded) {
        character = character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character | 0x20) : character;
    }
    return folded;
}

}  // namespace wrb
