// Texts as bytes, and bytes as texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace wrb {

// The bytes are those of the text, and live as long as it does.
inline std::span<const uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}
inline std::span<const uint8_t> BytesOf(std::wstring_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size() * sizeof(wchar_t)};
}

// The UTF-16 text that the bytes are; an odd last byte is left out.
inline std::wstring WideTextOf(std::span<const uint8_t> bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    if (!text.empty()) {  // else `bytes` may be null
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    }
    return text;
}

}  // namespace wrb
