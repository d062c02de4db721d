// Scan values from their numbers.
#pragma once

#include <array>

#include "ScanGroup.h"

// In the order of the answers; those that are not given are 0.
inline tagScanGroupValues Numbers(const std::array<uint32_t, 12>& n) {
    return {n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8], n[9], n[10], n[11], {}, {}, {}, {}, {}, {}, {}, {}};
}
