// Any message of docs/wire-formats.md as fields with their places. The bytes are read without trust.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "Fields.h"

namespace wrb {

// Finds out what the bytes are, by their beginning. What is none of the formats is shown as text, or as bytes.
Decoded Decode(std::span<const uint8_t> bytes);

}  // namespace wrb
