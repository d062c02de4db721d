#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <filesystem>

#include "SqlConnection.h"
#include "SqlError.h"
#include "Text.h"

namespace wrb {
namespace {

using namespace sqlite_api;  // SQLite's own functions: SOCI includes them there

constexpr char kBusySeconds[] = "5";

SqlFailure FailureOf(int code) {
    switch (code & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return SqlFailure::Busy;
        case SQLITE_FULL:
            return SqlFailure::Full;
        case SQLITE_IOERR:
            return SqlFailure::Io;
        case SQLITE_NOMEM:
            return SqlFailure::Memory;
        case SQLITE_CANTOPEN:
            return SqlFailure::CannotOpen;
        case SQLITE_NOTADB:
            return SqlFailure::NotADatabase;
        case SQLITE_CORRUPT:
            return SqlFailure::Damaged;
        case SQLITE_CONSTRAINT:
            return SqlFailure::Constraint;
        case SQLITE_READONLY:  // as long as this connection lives, also when the file is no longer
            return SqlFailure::Disconnected;
        default:
            return SqlFailure::Other;
    }
}

// SQLite's text does not tell a missing folder from a folder or a lack of rights.
const char* WhyNotOpened(const std::filesystem::path& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        return ": it is a folder";
    }
    return path.has_parent_path() && !std::filesystem::exists(path.parent_path(), ignored) ? ": its folder is missing"
                                                                                           : "";
}

[[noreturn]] void Throw(const std::string& file, int code, const std::string& what) {
    const SqlFailure failure = FailureOf(code);
    throw SqlError(failure,
                   file + ": " + what + (failure == SqlFailure::CannotOpen ? WhyNotOpened(Utf8ToWide(file)) : ""));
}

// Runs `work`; what SOCI throws becomes an SqlError. SOCI's messages start with the place in its source.
template <typename Work>
auto Translated(const std::string& file, const Work& work) {
    try {
        return work();
    } catch (const soci::soci_error& error) {
        const auto* const sqlite = dynamic_cast<const soci::sqlite3_soci_error*>(&error);
        std::string what = error.get_error_message();
        if (what.starts_with("sqlite3_")) {
            what.erase(0, what.find(": ") + 2);
        }
        Throw(file, sqlite != nullptr ? sqlite->result() : SQLITE_ERROR, what);
    }
}

class SqlitePrepared final : public PreparedSql {
  public:
    SqlitePrepared(const std::string& file, soci::session& session, const std::string& sql)
        : m_file(file), m_statement(session) {
        m_statement.alloc();
        m_statement.prepare(sql);
        m_backEnd = static_cast<soci::sqlite3_statement_backend*>(m_statement.get_backend());
    }

    void Bind(int position, int64_t number) override { Check(sqlite3_bind_int64(m_backEnd->stmt_, position, number)); }
    void Bind(int position, std::wstring_view text) override {
        // A null pointer would bind NULL instead of an empty text. The destructor -1 has SQLite copy the text.
        Check(sqlite3_bind_text16(m_backEnd->stmt_, position, text.empty() ? L"" : text.data(),
                                  static_cast<int>(text.size() * sizeof(wchar_t)), SQLITE_TRANSIENT));
    }

    bool Execute() override {
        return Translated(m_file, [this] { return m_statement.execute(true); });
    }
    bool Fetch() override {
        return Translated(m_file, [this] { return m_backEnd->fetch(1) == m_backEnd->ef_success; });
    }
    void Reset() noexcept override {
        m_backEnd->reset();
        sqlite3_clear_bindings(m_backEnd->stmt_);
    }
    int64_t ChangedRows() override { return m_statement.get_affected_rows(); }

    int Columns() const override { return sqlite3_column_count(m_backEnd->stmt_); }
    bool IsNull(int column) const override { return TypeOf(column) == SQLITE_NULL; }
    bool IsNumber(int column) const override { return TypeOf(column) == SQLITE_INTEGER; }
    int64_t Number(int column) const override { return sqlite3_column_int64(m_backEnd->stmt_, column); }
    std::wstring Text(int column) const override {
        // The text first: asking for it may convert the value and so change its length.
        const void* text = sqlite3_column_text16(m_backEnd->stmt_, column);
        const int bytes = sqlite3_column_bytes16(m_backEnd->stmt_, column);
        return text == nullptr ? std::wstring()
                               : std::wstring(static_cast<const wchar_t*>(text), static_cast<std::size_t>(bytes) / 2);
    }

  private:
    int TypeOf(int column) const { return sqlite3_column_type(m_backEnd->stmt_, column); }
    void Check(int code) const {
        if (code != SQLITE_OK) {
            Throw(m_file, code, sqlite3_errstr(code));
        }
    }

    const std::string m_file;
    soci::statement m_statement;
    soci::sqlite3_statement_backend* m_backEnd = nullptr;
};

auto* Handle(soci::session& session) {
    return static_cast<soci::sqlite3_session_backend*>(session.get_backend())->conn_;
}

class SqliteConnection final : public SqlConnection {
  public:
    explicit SqliteConnection(const std::string& file)
        : m_file(file), m_session(Translated(file, [&file] {
              const std::string parameters = "dbname=\"" + file + "\" timeout=" + kBusySeconds;
              return std::make_unique<soci::session>(soci::sqlite3, parameters);
          })) {}

    void Execute(const std::string& sql) override {
        Check(sqlite3_exec(Handle(*m_session), sql.c_str(), nullptr, nullptr, nullptr));
    }
    // At once as a writer: two readers that both want to write would wait for each other.
    void Begin() override { Execute("BEGIN IMMEDIATE"); }
    void Commit() override { Execute("COMMIT"); }
    void Rollback() override { Execute("ROLLBACK"); }

    std::unique_ptr<PreparedSql> Prepare(const std::string& sql) override {
        return Translated(m_file, [&] { return std::make_unique<SqlitePrepared>(m_file, *m_session, sql); });
    }

    SqlEngine Engine() const override { return SqlEngine::Sqlite; }
    void BackUp(const std::wstring& file) override {
        auto vacuum = Prepare("VACUUM INTO :file");
        vacuum->Bind(1, file);
        vacuum->Execute();
    }
    void EndStatementsAt(std::chrono::steady_clock::time_point end) override {
        constexpr int kInstructions = 1000;  // of SQLite's machine, between two looks at the clock
        m_end = end;
        sqlite3_progress_handler(Handle(*m_session), kInstructions, IsOver, this);
    }

  private:
    static int IsOver(void* self) {
        return std::chrono::steady_clock::now() >= static_cast<SqliteConnection*>(self)->m_end ? 1 : 0;
    }

    void Check(int code) const {
        if (code != SQLITE_OK) {
            Throw(m_file, code, sqlite3_errmsg(Handle(*m_session)));
        }
    }

    const std::string m_file;
    const std::unique_ptr<soci::session> m_session;
    std::chrono::steady_clock::time_point m_end;
};

}  // namespace

std::unique_ptr<SqlConnection> ConnectSqlite(const SqlAddress& address) {
    return std::make_unique<SqliteConnection>(address.name);
}

}  // namespace wrb
