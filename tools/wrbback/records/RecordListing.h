// Rows of a record table for people and for programs. Reads while the service writes, and holds no more than a piece of
// the text at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "RecordTable.h"

namespace wrb {

class SqlDb;

using ListingSink = std::function<void(const std::string& utf8)>;

// The latest `limit` rows, 0: all, in the order of their coming. Throw SqlError.

// Head line, a line a row, and a line that counts them. Control characters are shown as escapes.
void ListAsText(SqlDb& db, const RecordTable& table, uint64_t limit, const ListingSink& print);

// A JSON array of objects with the column names as keys, one row a line.
void ListAsJson(SqlDb& db, const RecordTable& table, uint64_t limit, const ListingSink& print);

}  // namespace wrb
