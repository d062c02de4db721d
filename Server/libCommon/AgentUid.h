// How agents are named: by a GUID text without braces, in upper or lower case.
#pragma once

#include <cstddef>

namespace wrb {

// What counts of a longer text, but where a function says otherwise.
inline constexpr std::size_t kUidCharacters = 36;

}  // namespace wrb
