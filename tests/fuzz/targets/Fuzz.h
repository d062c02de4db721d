// What every fuzz target shares. A target takes the bytes that a peer sends; it fails by a sanitizer's finding or by
// Require.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

inline void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}
#define REQUIRE(condition) Require(condition, #condition)

// The bytes as UTF-16 text; an odd last byte is left out.
inline std::wstring WideInput(const uint8_t* data, std::size_t size) {
    std::wstring text(size / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data, text.size() * sizeof(wchar_t));
    return text;
}

// Text that a view ends without a terminator, where a read beyond the end is found.
inline std::string BytesInput(const uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}
