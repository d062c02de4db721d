// The database of the reference back end: its tables, and how it is opened.
//
// A SQLite file is in write-ahead mode: readers see the last commit and never wait for a writer, so that a file that is
// being served can be seeded and looked into. Texts are stored as UTF-16. A commit survives the end of the process at
// once, and a loss of power up to SQLite's last checkpoint. Any other engine is reached by ODBC.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "SqlDb.h"

namespace wrb {

// The scan table's column "type" holds the number of a wrb::ScanType.

// Opens a database that CreateStore has made, by its address (SqlAddress.h); one of an older version is brought
// forward. Throws SqlError for one that is missing, damaged, locked, of another program or of a newer version, and says
// which; std::invalid_argument for an address that makes no sense.
std::unique_ptr<SqlDb> OpenStore(const std::wstring& address);

// The same for a database that may not be there yet, or be empty.
std::unique_ptr<SqlDb> CreateStore(const std::wstring& address);

// Brings a database of an older version forward, and tells from which version to which. Throws as OpenStore does.
struct StoreMigration {
    int64_t from;
    int64_t to;
};
std::optional<StoreMigration> MigrateStore(const std::wstring& address);

// Throws SqlError when a file of the database is damaged, or when an index does not fit its table. Reads it whole.
enum class VerifyDepth : uint8_t { kFiles, kIndexesToo };
void VerifyStore(SqlDb& db, const std::wstring& address, VerifyDepth depth = VerifyDepth::kFiles);

// Deletes all but the latest `keep` rows of a table whose ids count up.
void KeepLatest(SqlDb& db, const std::string& table, int64_t keep);

}  // namespace wrb
