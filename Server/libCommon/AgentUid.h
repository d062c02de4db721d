// How agents are named: by a GUID text without braces, in upper or lower case.
#pragma once

#include <cstddef>
#include <cwchar>
#include <string>

namespace wrb {

// How many characters of a uid count, unless a function says otherwise.
inline constexpr std::size_t kUidCharacters = 36;

// A uid as requests and sections carry it: a longer text is cut, null counts as empty.
inline std::wstring CutUid(const wchar_t* uid) {
    return uid == nullptr ? std::wstring() : std::wstring(uid, wcsnlen(uid, kUidCharacters));
}

}  // namespace wrb
