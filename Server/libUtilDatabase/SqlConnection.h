// What SqlDb needs of a kind of database; of no use outside this library.
//
// SOCI connects, prepares, executes, fetches and ends transactions. It exchanges texts in `char` only, in the encoding
// that a driver likes, and allots 100 MB for a long column. So values go in and out through the engine's own statement
// handle, which SOCI offers, in UTF-16.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "SqlAddress.h"
#include "SqlDb.h"

namespace wrb {

// A prepared statement. Parameters count from 1, columns from 0.
class PreparedSql {
  public:
    PreparedSql() = default;
    virtual ~PreparedSql() = default;
    PreparedSql(const PreparedSql&) = delete;
    PreparedSql& operator=(const PreparedSql&) = delete;

    virtual void Bind(int position, int64_t number) = 0;
    virtual void Bind(int position, std::wstring_view text) = 0;  // copied

    virtual bool Execute() = 0;  // true: there is a row
    virtual bool Fetch() = 0;    // the next row
    virtual void Reset() noexcept = 0;
    virtual int64_t ChangedRows() = 0;

    virtual int Columns() const = 0;
    virtual bool IsNull(int column) const = 0;
    virtual bool IsNumber(int column) const = 0;
    virtual int64_t Number(int column) const = 0;
    virtual std::wstring Text(int column) const = 0;
};

class SqlConnection {
  public:
    SqlConnection() = default;
    virtual ~SqlConnection() = default;
    SqlConnection(const SqlConnection&) = delete;
    SqlConnection& operator=(const SqlConnection&) = delete;

    virtual void Execute(const std::string& sql) = 0;
    virtual void Begin() = 0;
    virtual void Commit() = 0;
    virtual void Rollback() = 0;
    virtual std::unique_ptr<PreparedSql> Prepare(const std::string& sql) = 0;
    virtual SqlEngine Engine() const = 0;
    virtual void BackUp(const std::wstring& file) = 0;
    virtual void EndStatementsAt(std::chrono::steady_clock::time_point /*end*/) {}
};

std::unique_ptr<SqlConnection> ConnectSqlite(const SqlAddress& address);
std::unique_ptr<SqlConnection> ConnectOdbc(const SqlAddress& address);

}  // namespace wrb
