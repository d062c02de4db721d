// Compares names as the file system does: upper and lower case are equal.
#pragma once

#include <windows.h>

#include <string_view>

namespace wrb {

inline int CompareIgnoringCase(std::wstring_view left, std::wstring_view right) noexcept {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE);
}

inline bool EqualIgnoringCase(std::wstring_view left, std::wstring_view right) noexcept {
    return CompareIgnoringCase(left, right) == CSTR_EQUAL;
}

struct LessIgnoringCase {
    bool operator()(std::wstring_view left, std::wstring_view right) const noexcept {
        return CompareIgnoringCase(left, right) == CSTR_LESS_THAN;
    }
};

}  // namespace wrb
