// Cabinets for tests, from memory to memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

struct NewEntry {
    std::string name;
    Bytes data;
};

// Compressed (MSZIP).
Bytes BuildCabinet(const std::vector<NewEntry>& entries);

// `size` bytes that do not compress, the same for the same seed.
Bytes Noise(std::size_t size, uint32_t seed = 1);
