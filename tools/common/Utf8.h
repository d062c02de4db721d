// Whether a file that people write is UTF-8.
#pragma once

#include <windows.h>

#include <string_view>

namespace wrb {

inline bool IsUtf8(std::string_view bytes) noexcept {
    return bytes.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                                static_cast<int>(bytes.size()), nullptr, 0) != 0;
}

}  // namespace wrb
