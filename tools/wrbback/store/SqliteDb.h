// A SQLite connection and its prepared statements.
//
// Every failure throws SqliteError with a text that names the file. A connection, its statements and what they return
// belong to one thread at a time.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wrb {

class SqliteError : public std::runtime_error {
  public:
    SqliteError(int code, const std::string& text) : std::runtime_error(text), m_code(code) {}

    int Code() const noexcept { return m_code; }  // SQLite's primary result code

  private:
    int m_code;
};

// A prepared statement in use: bind, step, read. Going out of scope makes it ready for the next use.
class SqliteStatement {
  public:
    explicit SqliteStatement(sqlite3_stmt* statement) : m_statement(statement) {}
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    // By the parameter's name, sigil included (":uid"). A name that the statement does not have is passed over: one
    // list of values may serve several statements. Texts are copied.
    SqliteStatement& Bind(const char* name, int64_t number);
    SqliteStatement& Bind(const char* name, std::wstring_view text);

    bool Step();  // true: there is a row
    void Run();   // to its end

    int Columns() const { return sqlite3_column_count(m_statement); }
    bool IsNumber(int column) const { return sqlite3_column_type(m_statement, column) == SQLITE_INTEGER; }
    bool IsNull(int column) const { return sqlite3_column_type(m_statement, column) == SQLITE_NULL; }
    int64_t Number(int column) const { return sqlite3_column_int64(m_statement, column); }
    std::wstring Text(int column) const;

  private:
    sqlite3_stmt* m_statement;
};

class SqliteDb {
  public:
    enum class Open { kReadWrite, kCreate };

    // With kReadWrite the file must exist. Waits up to five seconds for locks of other connections.
    SqliteDb(const std::wstring& path, Open mode);

    void Execute(const char* sql);  // one or several statements without parameters

    // Prepared on first use and kept for the life of the connection.
    SqliteStatement Use(const std::string& sql);

    int64_t NumberOf(const char* sql);  // the first column of the first row
    int64_t Changes() const;            // rows that the last write changed
    bool InTransaction() const { return sqlite3_get_autocommit(m_db.get()) == 0; }

  private:
    struct CloseDb {
        void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    void Check(int code);

    std::string m_name;  // for messages
    std::unique_ptr<sqlite3, CloseDb> m_db;
    std::map<std::string, std::unique_ptr<sqlite3_stmt, FinalizeStatement>> m_statements;  // go before the connection
};

// All or nothing: what is not committed is rolled back.
class SqliteTransaction {
  public:
    explicit SqliteTransaction(SqliteDb& db) : m_db(db) { m_db.Execute("BEGIN IMMEDIATE"); }
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    void Commit() { m_db.Execute("COMMIT"); }

  private:
    SqliteDb& m_db;
};

}  // namespace wrb
