#include <windows.h>

#include <soci/odbc/soci-odbc.h>
#include <soci/soci.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <deque>
#include <string_view>
#include <vector>

#include "NamedSql.h"
#include "SqlConnection.h"
#include "SqlError.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr SQLULEN kLongestVarchar = 4000;  // longer texts are bound as "long" ones
constexpr std::size_t kPieceCharacters = 4096;

// By the start of the SQL state; the longer ones first. 25006: the server has become read-only, as after a fail-over. A
// new connection may reach the one that takes writes.
constexpr struct {
    std::string_view state;
    SqlFailure failure;
} kFailures[] = {
    {"08001", SqlFailure::CannotOpen},   {"08004", SqlFailure::CannotOpen},
    {"28", SqlFailure::CannotOpen},      {"IM", SqlFailure::CannotOpen},
    {"3D", SqlFailure::CannotOpen},      {"08", SqlFailure::Disconnected},
    {"57P", SqlFailure::Disconnected},   {"HYT01", SqlFailure::Disconnected},
    {"40", SqlFailure::Conflict},        {"23", SqlFailure::Constraint},
    {"53100", SqlFailure::Full},         {"53200", SqlFailure::Memory},
    {"HY001", SqlFailure::Memory},       {"53", SqlFailure::Busy},
    {"55P03", SqlFailure::Busy},         {"HYT00", SqlFailure::Busy},
    {"57014", SqlFailure::Busy},         {"58", SqlFailure::Io},
    {"25006", SqlFailure::Disconnected},
};

SqlFailure FailureOf(std::string_view state) {
    const auto* const found =
        std::ranges::find_if(kFailures, [state](const auto& row) { return state.starts_with(row.state); });
    return found == std::end(kFailures) ? SqlFailure::Other : found->failure;
}

// What messages call the connection, how long its statements may take, and its handle once there is one.
struct OdbcLink {
    std::string name;
    SQLULEN statementSeconds = 0;
    soci::session* session = nullptr;
};

HDBC HandleOf(soci::session& session) {
    return static_cast<soci::odbc_session_backend*>(session.get_backend())->hdbc_;
}

// Drivers report a lost connection under many states, but know that it is.
bool IsDead(const OdbcLink& link) {
    SQLUINTEGER dead = SQL_CD_FALSE;
    return link.session != nullptr &&
           SQL_SUCCEEDED(SQLGetConnectAttr(HandleOf(*link.session), SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr)) &&
           dead == SQL_CD_TRUE;
}

template <typename Work>
auto Translated(const OdbcLink& link, const Work& work) {
    try {
        return work();
    } catch (const soci::odbc_soci_error& error) {
        const SqlFailure failure = FailureOf(reinterpret_cast<const char*>(error.odbc_error_code()));
        throw SqlError(IsDead(link) ? SqlFailure::Disconnected : failure,
                       link.name + ": " + reinterpret_cast<const char*>(error.odbc_error_message()));
    } catch (const soci::soci_error& error) {
        throw SqlError(SqlFailure::Other, link.name + ": " + error.get_error_message());
    }
}

// A bound value: the driver reads it when the statement is executed.
struct BoundValue {
    int64_t number = 0;
    std::wstring text;
    SQLLEN length = 0;
};

class OdbcPrepared final : public PreparedSql {
  public:
    OdbcPrepared(const OdbcLink& link, const std::string& sql) : m_link(link), m_statement(*link.session) {
        m_statement.alloc();
        m_backEnd = static_cast<soci::odbc_statement_backend*>(m_statement.get_backend());
        // A driver that cannot do this waits for as long as the engine does.
        SQLSetStmtAttr(m_backEnd->hstmt_, SQL_ATTR_QUERY_TIMEOUT, reinterpret_cast<SQLPOINTER>(link.statementSeconds),
                       0);
        m_statement.prepare(sql);
        m_values.resize(m_backEnd->names_.size());
    }

    void Bind(int position, int64_t number) override {
        BoundValue& value = m_values.at(static_cast<std::size_t>(position) - 1);
        value.number = number;
        value.length = 0;
        Check(SQLBindParameter(m_backEnd->hstmt_, static_cast<SQLUSMALLINT>(position), SQL_PARAM_INPUT, SQL_C_SBIGINT,
                               SQL_BIGINT, 0, 0, &value.number, 0, &value.length),
              "binding a number");
    }

    // Other engines than SQLite take neither NUL nor lone surrogates: both become U+FFFD.
    void Bind(int position, std::wstring_view text) override {
        BoundValue& value = m_values.at(static_cast<std::size_t>(position) - 1);
        value.text = Utf8ToWide(WideToUtf8(text));
        std::ranges::replace(value.text, L'\0', L'\xFFFD');
        value.length = static_cast<SQLLEN>(value.text.size() * sizeof(wchar_t));
        const SQLULEN size = std::max<SQLULEN>(value.text.size(), 1);
        Check(SQLBindParameter(m_backEnd->hstmt_, static_cast<SQLUSMALLINT>(position), SQL_PARAM_INPUT, SQL_C_WCHAR,
                               size > kLongestVarchar ? SQL_WLONGVARCHAR : SQL_WVARCHAR, size, 0, value.text.data(), 0,
                               &value.length),
              "binding a text");
    }

    bool Execute() override {
        const bool executed = Translated(m_link, [this] { return m_statement.execute(true); });
        Describe();
        return executed && Read(!m_isNumber.empty());
    }
    bool Fetch() override {
        return Read(!m_isNumber.empty() &&
                    Translated(m_link, [this] { return m_backEnd->fetch(1) == m_backEnd->ef_success; }));
    }
    void Reset() noexcept override {
        SQLFreeStmt(m_backEnd->hstmt_, SQL_CLOSE);
        SQLFreeStmt(m_backEnd->hstmt_, SQL_RESET_PARAMS);
    }
    int64_t ChangedRows() override { return m_statement.get_affected_rows(); }

    int Columns() const override { return static_cast<int>(m_isNumber.size()); }
    bool IsNull(int column) const override { return CellOf(column).length == SQL_NULL_DATA; }
    bool IsNumber(int column) const override {
        return m_isNumber.at(static_cast<std::size_t>(column)) && !IsNull(column);
    }
    int64_t Number(int column) const override { return CellOf(column).number; }
    std::wstring Text(int column) const override {
        return IsNumber(column) ? std::to_wstring(Number(column)) : CellOf(column).text;
    }

  private:
    const BoundValue& CellOf(int column) const { return m_row.at(static_cast<std::size_t>(column)); }

    void Check(SQLRETURN code, const char* what) const {
        if (soci::is_odbc_error(code)) {
            Translated(m_link, [&] { throw soci::odbc_soci_error(SQL_HANDLE_STMT, m_backEnd->hstmt_, what); });
        }
    }

    // Which columns of the result hold whole numbers.
    void Describe() {
        SQLSMALLINT columns = 0;
        Check(SQLNumResultCols(m_backEnd->hstmt_, &columns), "counting columns");
        m_isNumber.assign(static_cast<std::size_t>(columns), false);
        for (SQLUSMALLINT i = 0; i < columns; ++i) {
            SQLLEN type = 0;
            Check(SQLColAttributeW(m_backEnd->hstmt_, static_cast<SQLUSMALLINT>(i + 1), SQL_DESC_CONCISE_TYPE, nullptr,
                                   0, nullptr, &type),
                  "describing a column");
            m_isNumber[i] = type == SQL_BIGINT || type == SQL_INTEGER || type == SQL_SMALLINT || type == SQL_TINYINT ||
                            type == SQL_NUMERIC || type == SQL_DECIMAL || type == SQL_BIT;
        }
    }

    // Takes the row's cells in their order: not every driver can go back.
    bool Read(bool there) {
        m_row.clear();
        for (std::size_t i = 0; there && i < m_isNumber.size(); ++i) {
            const auto column = static_cast<SQLUSMALLINT>(i + 1);
            BoundValue& cell = m_row.emplace_back();
            if (m_isNumber[i]) {
                Check(SQLGetData(m_backEnd->hstmt_, column, SQL_C_SBIGINT, &cell.number, 0, &cell.length),
                      "reading a number");
            } else {
                ReadText(column, cell);
            }
        }
        return there;
    }

    void ReadText(SQLUSMALLINT column, BoundValue& cell) const {
        for (SQLRETURN code = SQL_SUCCESS_WITH_INFO; code == SQL_SUCCESS_WITH_INFO;) {
            std::array<wchar_t, kPieceCharacters + 1> piece{};
            code = SQLGetData(m_backEnd->hstmt_, column, SQL_C_WCHAR, piece.data(), sizeof piece, &cell.length);
            Check(code, "reading a text");
            if (code == SQL_NO_DATA || cell.length == SQL_NULL_DATA) {
                return;
            }
            cell.text += piece.data();
        }
    }

    const OdbcLink m_link;
    soci::statement m_statement;
    soci::odbc_statement_backend* m_backEnd = nullptr;
    std::deque<BoundValue> m_values;
    std::vector<bool> m_isNumber;
    std::vector<BoundValue> m_row;
};

// SOCI connects before it shows the handle that takes SQL_ATTR_LOGIN_TIMEOUT. PostgreSQL's driver takes the limit in
// the connection string; that of other drivers stays.
std::string WithLoginTimeout(const SqlAddress& address) {
    const std::string text = WideToUtf8(address.target);
    std::string lower = text;
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const bool takesIt = lower.find("postgres") != std::string::npos && lower.find("pqopt") == std::string::npos;
    return takesIt ? text + ";pqopt={connect_timeout=" + std::to_string(address.loginSeconds) + "}" : text;
}

class OdbcConnection final : public SqlConnection {
  public:
    explicit OdbcConnection(const SqlAddress& address)
        : m_session(Translated(OdbcLink{address.name},
                               [&address] {
                                   soci::connection_parameters parameters(soci::odbc, WithLoginTimeout(address));
                                   parameters.set_option(soci::odbc_option_driver_complete,
                                                         std::to_string(SQL_DRIVER_NOPROMPT));
                                   return std::make_unique<soci::session>(parameters);
                               })),
          m_link{address.name, address.statementSeconds, m_session.get()} {
        // For a commit, which is no statement. Not every driver knows it; see Dialect::limit.
        SQLSetConnectAttr(HandleOf(*m_session), SQL_ATTR_CONNECTION_TIMEOUT,
                          reinterpret_cast<SQLPOINTER>(m_link.statementSeconds), 0);
    }

    void Execute(const std::string& sql) override {
        for (const std::string& statement : SplitStatements(sql)) {
            Translated(m_link, [&] { *m_session << statement; });
        }
    }
    void Begin() override {
        Translated(m_link, [this] { m_session->begin(); });
    }
    void Commit() override {
        Translated(m_link, [this] { m_session->commit(); });
    }
    void Rollback() override {
        Translated(m_link, [this] { m_session->rollback(); });
    }
    std::unique_ptr<PreparedSql> Prepare(const std::string& sql) override {
        return Translated(m_link, [&] { return std::make_unique<OdbcPrepared>(m_link, sql); });
    }

    SqlEngine Engine() const override {
        const auto* const backEnd = static_cast<soci::odbc_session_backend*>(m_session->get_backend());
        return backEnd->get_database_product() == backEnd->prod_mssql ? SqlEngine::SqlServer : SqlEngine::PostgreSql;
    }
    void BackUp(const std::wstring& /*file*/) override {
        throw SqlError(SqlFailure::Other, m_link.name + ": the engine's own tools make its backups");
    }

  private:
    const std::unique_ptr<soci::session> m_session;
    const OdbcLink m_link;
};

}  // namespace

std::unique_ptr<SqlConnection> ConnectOdbc(const SqlAddress& address) {
    return std::make_unique<OdbcConnection>(address);
}

}  // namespace wrb
