// Where the engines differ. All other SQL of the store is written once, in the words that they share.
#pragma once

#include <string>

#include "SqlDb.h"

namespace wrb {

struct Dialect {
    // Parts of SQL. The schema has {caseless}, {text}, {number}, {id} and {keyed} in their place.
    const char* caseless;  // a text column that does not tell upper from lower case
    const char* text;      // UTF-16 or UTF-8, of any length
    const char* number;    // 64 bits
    const char* id;        // a key that counts up by itself
    const char* plain;     // the end of a CAST to a text that LIKE takes, with its closing bracket
    const char* page;      // follows ORDER BY: @rows rows from @first on
    const char* keyed;     // follows the columns of a table whose rows are found by its key alone

    // Whole statements.
    const char* setUp;         // for each new connection
    const char* limit;         // limits the time of a statement or a commit; the milliseconds follow. Null: no limit
    const char* prepareFile;   // for a new store, before the transaction that makes the tables
    const char* create;        // the first one of that transaction
    const char* tableNames;    // one row a table; an empty database has none
    const char* application;   // one number, kStoreApplicationId in a store of ours
    const char* version;       // one number, kStoreVersion in a store of this version
    const char* writeVersion;  // the number follows
    const char* check;  // one text, "ok" when the files of the database are whole. Null: the engine looks after them
    const char* checkIndexes;  // the same, and the indexes fit their tables; takes longer
};

const Dialect& DialectOf(SqlEngine engine);

// A part of the schema with the engine's words.
std::string Spelled(SqlEngine engine, std::string sql);

}  // namespace wrb
