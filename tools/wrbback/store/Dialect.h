// Where the engines differ. All other SQL of the store is written once, in the words that they share.
#pragma once

#include <string>

#include "SqlDb.h"

namespace wrb {

struct Dialect {
    // The words that stand for these in the schema: {caseless} {text} {number} {id} {keyed}.
    const char* caseless;  // a text column that does not tell upper from lower case
    const char* text;      // UTF-16 or UTF-8, of any length
    const char* number;    // 64 bits
    const char* id;        // a key that counts up by itself
    const char* plain;     // after CAST(column AS: a text that LIKE takes, and the bracket that ends the cast
    const char* page;      // after an order: @rows rows from @first on
    const char* keyed;     // after the columns of a table that is found by its key alone

    const char* setUp;         // on each new connection
    const char* limit;         // of the time that a statement or a commit may take; milliseconds follow. Null: none
    const char* prepareFile;   // before the first table, outside of a transaction
    const char* create;        // and inside
    const char* tableNames;    // none: the database is empty
    const char* application;   // kStoreApplicationId is there
    const char* version;       // and kStoreVersion there
    const char* writeVersion;  // the number follows
    const char* check;  // one text, "ok" when the files of the database are whole. Null: the engine looks after them
    const char* checkIndexes;  // the same, and the indexes fit their tables; takes longer
};

const Dialect& DialectOf(SqlEngine engine);

// A part of the schema with the engine's words.
std::string Spelled(SqlEngine engine, std::string sql);

}  // namespace wrb
