// Texts of HTTP, whose keywords are ASCII and written in any case.
#pragma once

#include <algorithm>
#include <string_view>

namespace wrb {

inline char SmallLetter(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
}

inline bool EqualIgnoringCase(std::string_view left, std::string_view right) noexcept {
    return std::ranges::equal(left, right, {}, SmallLetter, SmallLetter);
}

inline bool StartsIgnoringCase(std::string_view text, std::string_view prefix) noexcept {
    return EqualIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace wrb
