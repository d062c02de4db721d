#include "SqliteDb.h"

#include "Text.h"

namespace wrb {
namespace {

constexpr int kBusyMilliseconds = 5000;

[[noreturn]] void Throw(sqlite3* db, const std::string& where, int code) {
    const char* what = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(code);
    const std::string cause =  // SQLite's text does not tell a missing folder from a folder or a lack of rights
        db != nullptr && (code & 0xFF) == SQLITE_CANTOPEN
            ? " (system error " + std::to_string(sqlite3_system_errno(db)) + ")"
            : "";
    throw SqliteError(code & 0xFF, where + ": " + what + cause);
}

}  // namespace

SqliteStatement::~SqliteStatement() {
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

SqliteStatement& SqliteStatement::Bind(const char* name, int64_t number) {
    sqlite3_bind_int64(m_statement, sqlite3_bind_parameter_index(m_statement, name), number);
    return *this;
}

SqliteStatement& SqliteStatement::Bind(const char* name, std::wstring_view text) {
    // A null pointer would bind NULL instead of an empty text.
    sqlite3_bind_text16(m_statement, sqlite3_bind_parameter_index(m_statement, name), text.empty() ? L"" : text.data(),
                        static_cast<int>(text.size() * sizeof(wchar_t)), SQLITE_TRANSIENT);
    return *this;
}

bool SqliteStatement::Step() {
    const int code = sqlite3_step(m_statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        sqlite3* db = sqlite3_db_handle(m_statement);
        const char* file = sqlite3_db_filename(db, "main");
        Throw(db, file != nullptr ? file : "database", code);
    }
    return code == SQLITE_ROW;
}

void SqliteStatement::Run() {
    while (Step()) {
    }
}

std::wstring SqliteStatement::Text(int column) const {
    // The text first: asking for it may convert the value and so change its length.
    const void* text = sqlite3_column_text16(m_statement, column);
    const int bytes = sqlite3_column_bytes16(m_statement, column);
    return text == nullptr ? std::wstring()
                           : std::wstring(static_cast<const wchar_t*>(text), static_cast<std::size_t>(bytes) / 2);
}

SqliteDb::SqliteDb(const std::wstring& path, Open mode) : m_name(WideToUtf8(path)) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (mode == Open::kCreate ? SQLITE_OPEN_CREATE : 0);
    sqlite3* db = nullptr;
    const int code = sqlite3_open_v2(m_name.c_str(), &db, flags, nullptr);
    m_db.reset(db);  // also a connection that failed must be closed
    Check(code);
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, kBusyMilliseconds);
}

void SqliteDb::Check(int code) {
    if (code != SQLITE_OK) {
        Throw(m_db.get(), m_name, code);
    }
}

void SqliteDb::Execute(const char* sql) {
    Check(sqlite3_exec(m_db.get(), sql, nullptr, nullptr, nullptr));
}

SqliteStatement SqliteDb::Use(const std::string& sql) {
    auto& statement = m_statements[sql];
    if (!statement) {
        sqlite3_stmt* made = nullptr;
        Check(sqlite3_prepare_v3(m_db.get(), sql.c_str(), static_cast<int>(sql.size()) + 1, SQLITE_PREPARE_PERSISTENT,
                                 &made, nullptr));
        statement.reset(made);
    }
    return SqliteStatement(statement.get());
}

int64_t SqliteDb::NumberOf(const char* sql) {
    SqliteStatement statement = Use(sql);
    return statement.Step() ? statement.Number(0) : 0;
}

int64_t SqliteDb::Changes() const {
    return sqlite3_changes64(m_db.get());
}

SqliteTransaction::~SqliteTransaction() {
    if (m_db.InTransaction()) {
        try {
            m_db.Execute("ROLLBACK");
        } catch (const std::exception&) {  // the text of an error may lack memory, too
            // Nothing more to be done: SQLite rolls back when the file is opened next.
        }
    }
}

}  // namespace wrb
