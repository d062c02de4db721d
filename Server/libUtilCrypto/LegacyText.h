// Forms of passwords that agents in the field understand. Both are weak: for them only, never for anything new.
// docs/wire-formats.md gives both. They throw OS::CException when the system's crypto library fails.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace wrb {

using LegacyDesKey = std::array<uint8_t, 8>;

// The MD5 of the text's UTF-16LE bytes as 32 lower-case hexadecimal digits.
std::wstring LegacyMd5Text(std::wstring_view text);

// The text's UTF-16LE bytes, encrypted with DES in ECB mode under PKCS#5 padding, as upper-case hexadecimal digits.
std::wstring LegacyDesText(std::wstring_view text, const LegacyDesKey& key);

}  // namespace wrb
