// Looks for a part of a text.
#pragma once

#include <windows.h>

#include <string_view>

namespace wrb {

// Upper and lower case are equal, as in file names. An empty part is in every text.
inline bool ContainsIgnoringCase(std::wstring_view text, std::wstring_view part) noexcept {
    return part.empty() || FindStringOrdinal(FIND_FROMSTART, text.data(), static_cast<int>(text.size()), part.data(),
                                             static_cast<int>(part.size()), TRUE) >= 0;
}

}  // namespace wrb
