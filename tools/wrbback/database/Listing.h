// "DB_LIST_ROWS": rows of the store's tables for people, a page at a time. docs/wire-formats.md names the tables.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

class CCmdProtocol;

namespace wrb {

class SqlDb;

// `request` stands at the first field after the reply id. Nothing for a table that is not listed. Control characters of
// the cells are shown as escapes. Throws SqlError.
std::optional<std::wstring> ListRows(SqlDb& db, CCmdProtocol& request);

}  // namespace wrb
