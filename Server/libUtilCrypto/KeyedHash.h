// Random bytes, and hashes that only the owner of a key can make.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace wrb {

using HashKey = std::array<uint8_t, 32>;

// Both throw OS::CException when the system refuses.
void FillRandom(std::span<uint8_t> bytes);
HashKey KeyedHash(HashKey key, std::string_view text);  // HMAC with SHA-256

// Lower-case digits.
std::string HexDigits(std::span<const uint8_t> bytes);

}  // namespace wrb
