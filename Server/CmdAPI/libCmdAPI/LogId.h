// Ids of log rows.
#pragma once

#include <cstddef>

namespace wrb {
inline constexpr std::size_t kLogIdCapacity = 37;  // 36 characters and the terminator
}

// A new GUID as text: lower case, without braces. False, with a log line, when the system has none to give or `id` has
// room for fewer than 37 characters. Any thread, whatever its COM model; COM is left as it was.
bool cwCreateGUID(wchar_t* id, std::size_t capacity);
