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

struct RecordChoice {
    std::wstring uid;    // empty: rows of every agent; else the table has a column "UID"
    uint64_t limit = 0;  // the latest so many rows; 0: all
};

// The chosen rows in the order of their coming. Throw SqlError.

// Head line, a line a row, and a line that counts them and all that could be chosen. Control characters are shown as
// escapes.
void ListAsText(SqlDb& db, const RecordTable& table, const RecordChoice& choice, const ListingSink& print);

// A JSON array of objects with the column names as keys, one row a line.
void ListAsJson(SqlDb& db, const RecordTable& table, const RecordChoice& choice, const ListingSink& print);

}  // namespace wrb
