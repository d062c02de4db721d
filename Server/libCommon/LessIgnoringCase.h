// An order of names in which those that the file system takes for the same are equal.
#pragma once

#include <windows.h>

#include <string_view>

namespace wrb {

struct LessIgnoringCase {
    bool operator()(std::wstring_view left, std::wstring_view right) const noexcept {
        return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                    static_cast<int>(right.size()), TRUE) == CSTR_LESS_THAN;
    }
};

}  // namespace wrb
