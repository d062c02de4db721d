// The tables of the database. Every 32-bit number is stored as 0 ... 4294967295, also when it is signed on the wire.
//
// A change of the tables takes a new version number and a row in kMigrations. A database of an older version is brought
// forward when it is opened; one of a newer version is refused. A table of one more bundle takes no new version: it is
// made when a database that lacks it is opened.
#pragma once

#include <cstdint>
#include <span>

namespace wrb {

inline constexpr int64_t kStoreApplicationId = 0x57524244;  // "WRBD"
inline constexpr int64_t kStoreVersion = 4;

// But for the tables of the setting bundles (BundleTables.h).
extern const char kStoreSchema[];

struct Migration {
    int64_t from;  // to the version after it
    const char* sql;
};
std::span<const Migration> Migrations();  // in order

}  // namespace wrb
