// A connection to an SQL database and its prepared statements, over the SOCI library.
//
// Every failure throws SqlError with a text that names the database. A connection, its statements and what they return
// belong to one thread at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "SqlError.h"

namespace wrb {

class PreparedSql;
class SqlConnection;
class SqlDb;

// Kinds of SQL. Engines that this library does not know count as PostgreSQL's.
enum class SqlEngine : uint8_t { Sqlite, PostgreSql, SqlServer };

// A prepared statement in use: bind, step, read. Going out of scope makes it ready for the next use.
class SqlStatement {
  public:
    struct Prepared;  // and the names of its parameters

    SqlStatement(SqlDb& db, Prepared& prepared) : m_db(db), m_prepared(prepared) {}
    ~SqlStatement();
    SqlStatement(const SqlStatement&) = delete;
    SqlStatement& operator=(const SqlStatement&) = delete;

    // By the parameter's name; its sigil (":uid", "@uid") does not matter. A name that the statement does not have is
    // passed over: one list of values may serve several statements. Texts are copied.
    SqlStatement& Bind(std::string_view name, int64_t number);
    SqlStatement& Bind(std::string_view name, std::wstring_view text);

    // By the place of the parameter in the text, from 1. Texts are copied.
    SqlStatement& Bind(int place, int64_t number);
    SqlStatement& Bind(int place, std::wstring_view text);

    bool Step();  // true: there is a row
    void Run();   // to its end

    // Of the row, by column from 0.
    int Columns() const;
    bool IsNumber(int column) const;
    bool IsNull(int column) const;
    int64_t Number(int column) const;
    std::wstring Text(int column) const;

  private:
    template <typename Value>
    SqlStatement& BindAll(std::string_view name, const Value& value);

    SqlDb& m_db;
    Prepared& m_prepared;
    bool m_executed = false;
};

class SqlDb {
  public:
    // See SqlAddress.h. A SQLite file is made when there is none; locks of its other connections are waited for, for up
    // to five seconds.
    explicit SqlDb(const std::wstring& address);
    ~SqlDb();

    SqlEngine Engine() const;

    void Execute(const std::string& sql);  // one or several statements without parameters

    // Prepared on first use and kept for the life of the connection. Parameters are ":name", and "@name" or "$name" for
    // numbers: some engines must be told the type of a parameter in an expression.
    SqlStatement Use(const std::string& sql);

    int64_t NumberOf(const std::string& sql);      // the first column of the first row
    int64_t Changes() const { return m_changes; }  // rows that the last statement changed that was run
    bool InTransaction() const { return m_inTransaction; }

    // The last commit has failed in a way that leaves open whether it was carried out.
    bool CommitIsOpen() const { return m_commitIsOpen; }

    // Statements fail that run then, whatever limit the address has. SQLite only: others have the limit of the address.
    void EndStatementsAt(std::chrono::steady_clock::time_point end);

    // Copies the database into a new file while it is in use. SQLite only.
    void BackUp(const std::wstring& file);

  private:
    friend class SqlStatement;
    friend class SqlTransaction;

    const std::unique_ptr<SqlConnection> m_connection;
    std::map<std::string, std::unique_ptr<SqlStatement::Prepared>> m_statements;  // go before the connection
    int64_t m_changes = 0;
    bool m_inTransaction = false;
    bool m_commitIsOpen = false;
};

// All or nothing: what is not committed is rolled back.
class SqlTransaction {
  public:
    explicit SqlTransaction(SqlDb& db);
    ~SqlTransaction();
    SqlTransaction(const SqlTransaction&) = delete;
    SqlTransaction& operator=(const SqlTransaction&) = delete;

    void Commit();

  private:
    SqlDb& m_db;
};

}  // namespace wrb
