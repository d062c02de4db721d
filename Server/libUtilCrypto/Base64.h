// Base64 (RFC 4648) on one line, padded.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// Throws OS::CException when the system fails; `out` is then as it was.
void AppendBase64(std::wstring& out, std::span<const uint8_t> bytes);

// The bytes of a text. Nothing for a text that AppendBase64 would not write: one with line ends or blanks, without its
// padding, with unused bits that are set.
std::optional<std::vector<uint8_t>> ParseBase64(std::wstring_view text);

}  // namespace wrb
