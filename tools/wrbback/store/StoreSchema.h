// The tables of the database file. Every 32-bit number is stored as 0 ... 4294967295, also when it is signed on the
// wire.
//
// A change of the tables takes a new version number: a file of another version is refused, not guessed at.
#pragma once

#include <cstdint>

namespace wrb {

inline constexpr int64_t kStoreApplicationId = 0x57524244;  // "WRBD"
inline constexpr int64_t kStoreVersion = 2;

// But for the tables of the setting bundles (BundleTables.h).
extern const char kStoreSchema[];

}  // namespace wrb
