#include "SqlDb.h"

#include <vector>

#include "NamedSql.h"
#include "SqlAddress.h"
#include "SqlConnection.h"

namespace wrb {
namespace {

std::unique_ptr<SqlConnection> Connect(const SqlAddress& address) {
    return address.isOdbc ? ConnectOdbc(address) : ConnectSqlite(address);
}

}  // namespace

struct SqlStatement::Prepared {
    std::unique_ptr<PreparedSql> sql;
    std::vector<std::string> names;  // of the parameters, by position
};

SqlStatement::~SqlStatement() {
    m_prepared.sql->Reset();
}

template <typename Value>
SqlStatement& SqlStatement::BindAll(std::string_view name, const Value& value) {
    name.remove_prefix(1);
    for (std::size_t i = 0; i < m_prepared.names.size(); ++i) {
        if (m_prepared.names[i] == name) {
            m_prepared.sql->Bind(static_cast<int>(i) + 1, value);
        }
    }
    return *this;
}

SqlStatement& SqlStatement::Bind(std::string_view name, int64_t number) {
    return BindAll(name, number);
}
SqlStatement& SqlStatement::Bind(std::string_view name, std::wstring_view text) {
    return BindAll(name, text);
}

SqlStatement& SqlStatement::Bind(int place, int64_t number) {
    m_prepared.sql->Bind(place, number);
    return *this;
}
SqlStatement& SqlStatement::Bind(int place, std::wstring_view text) {
    m_prepared.sql->Bind(place, text);
    return *this;
}

bool SqlStatement::Step() {
    if (m_executed) {
        return m_prepared.sql->Fetch();
    }
    m_executed = true;
    return m_prepared.sql->Execute();
}

void SqlStatement::Run() {
    while (Step()) {
    }
    m_db.m_changes = m_prepared.sql->ChangedRows();
}

int SqlStatement::Columns() const {
    return m_prepared.sql->Columns();
}
bool SqlStatement::IsNumber(int column) const {
    return m_prepared.sql->IsNumber(column);
}
bool SqlStatement::IsNull(int column) const {
    return m_prepared.sql->IsNull(column);
}
int64_t SqlStatement::Number(int column) const {
    return m_prepared.sql->Number(column);
}
std::wstring SqlStatement::Text(int column) const {
    return m_prepared.sql->Text(column);
}

SqlDb::SqlDb(const std::wstring& address) : m_connection(Connect(ParseSqlAddress(address))) {}
SqlDb::~SqlDb() = default;

SqlEngine SqlDb::Engine() const {
    return m_connection->Engine();
}

void SqlDb::BackUp(const std::wstring& file) {
    m_connection->BackUp(file);
}

void SqlDb::EndStatementsAt(std::chrono::steady_clock::time_point end) {
    m_connection->EndStatementsAt(end);
}

void SqlDb::Execute(const std::string& sql) {
    m_connection->Execute(sql);
}

SqlStatement SqlDb::Use(const std::string& sql) {
    auto& prepared = m_statements[sql];
    if (!prepared) {
        NumberedSql numbered = NumberParameters(sql);
        prepared = std::make_unique<SqlStatement::Prepared>(
            SqlStatement::Prepared{m_connection->Prepare(numbered.text), std::move(numbered.names)});
    }
    return {*this, *prepared};
}

int64_t SqlDb::NumberOf(const std::string& sql) {
    SqlStatement statement = Use(sql);
    return statement.Step() ? statement.Number(0) : 0;
}

SqlTransaction::SqlTransaction(SqlDb& db) : m_db(db) {
    m_db.m_commitIsOpen = false;
    m_db.m_connection->Begin();
    m_db.m_inTransaction = true;
}

SqlTransaction::~SqlTransaction() {
    if (m_db.m_inTransaction) {
        m_db.m_inTransaction = false;
        try {
            m_db.m_connection->Rollback();
        } catch (const std::exception&) {
            // Some failures have rolled back already. A connection that is gone rolls back by itself.
        }
    }
}

void SqlTransaction::Commit() {
    m_db.m_commitIsOpen = true;
    m_db.m_connection->Commit();
    m_db.m_commitIsOpen = false;
    m_db.m_inTransaction = false;
}

}  // namespace wrb
