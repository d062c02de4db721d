#include "Listing.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

#include "CmdProtocol.h"
#include "DbListing.h"
#include "Dialect.h"
#include "SqlDb.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

using Columns = std::span<const char* const>;

constexpr std::size_t kLongestCell = 8192;   // characters; the longest text that people can set
constexpr std::size_t kLongestSearch = 256;  // the rest is not looked for

struct ListedTable {
    std::wstring_view name;  // in the request
    const char* from;
    Columns columns;
    std::size_t searched;    // the first columns, in which a text is looked for; 0: `key` must equal it
    const char* key;         // also the order of rows that are otherwise equal
    const char* order;       // the table's own
    const char* group = "";  // not empty: the rows are groups, and `total` counts what is in them
};

constexpr const char* kAgentColumns[] = {
    "uid",
    "computer",
    "ip",
    "domain_name",
    "program_version",
    "changed",
    "(SELECT count(*) FROM scan WHERE scan.uid = agent.uid)",
    "domain_path",
    "platform",
    "architecture",
    "status1",
    "status2",
    "scan_method",
    "opp_status",
    "opp_end",
    "firewall_policy",
    "firewall_count1",
    "firewall_count2",
    "firewall_count3",
    "firewall_count4",
    "firewall_count5",
    "firewall_count6",
    "firewall_time",
};
constexpr Columns kShortAgentColumns =
    Columns(kAgentColumns).first(6);  // no count of other rows: a page sorts all agents
constexpr const char* kSessionColumns[] = {"session"};
constexpr const char* kFirewallColumns[] = {"id",       "UID",  "DATE",    "LOCAL_HOST", "REMOTEHOST",
                                            "PROTOCOL", "TYPE", "SUBTYPE", "PORT",       "DIRECTION"};
constexpr const char* kRestoreColumns[] = {"id", "UID", "LOGID", "RECV_TIME", "LOG_TYPE", "RESULT"};
constexpr const char* kEventColumns[] = {"id", "RECEIVED", "SERVICE", "NAME", "FIELDS"};
constexpr const char* kAuditColumns[] = {"id",      "changed_at", "user_name", "target",
                                         "setting", "old_value",  "new_value"};

// The columns of the scan settings, whose values are counted: each with the number of agents that have it. The key is
// the scan type.
#define WRB_SCAN_COLUMNS(each)                                                                                         \
    each(flags) each(spyware_flags) each(compressed_layer) each(ole_layer) each(possible_virus_action) each(frequency) \
        each(hour) each(minute) each(am_pm) each(day_of_month) each(day_of_week) each(week_ordinal_of_month)           \
            each(weekday_of_month) each(ext_list) each(move_dir) each(cust_action) each(excluded_folder)               \
                each(excluded_file) each(excluded_ext) each(exclude_file_ext_list)

#define WRB_COLUMNS(column) constexpr const char* k_##column[] = {#column, "count(*)"};
WRB_SCAN_COLUMNS(WRB_COLUMNS)
#undef WRB_COLUMNS
#define WRB_COUNTS(column) \
    {L"scan." #column, "scan", k_##column, 0, "CAST(type AS VARCHAR(8))", "2 DESC", " GROUP BY " #column},

constexpr ListedTable kTables[] = {{L"agents", "agent", kShortAgentColumns, 5, "uid", "computer, uid"},
                                   {L"agent", "agent", kAgentColumns, 0, "uid", "uid"},
                                   {L"restore_session", "restore_session", kSessionColumns, 0, "uid", "position"},
                                   {L"firewall_log", "TBL_CFW_LOG", kFirewallColumns, 3, "id", "id DESC"},
                                   {L"restore_log", "TBL_RESTORE_LOG", kRestoreColumns, 4, "id", "id DESC"},
                                   {L"event", "event", kEventColumns, 5, "id", "id DESC"},
                                   {L"audit", "audit", kAuditColumns, 7, "id", "id DESC"},
                                   WRB_SCAN_COLUMNS(WRB_COUNTS)};
#undef WRB_COUNTS
#undef WRB_SCAN_COLUMNS

struct Query {
    const ListedTable* table;
    std::wstring search;
    std::size_t order = 0;
    bool isDescending = false;
    int64_t first = 0;
    int64_t rows = 0;
};

std::optional<Query> TakeQuery(CCmdProtocol& request) {
    std::wstring name;
    Query query{};
    uint32_t order = 0;
    uint32_t descending = 0;
    uint32_t first = 0;
    uint32_t rows = 0;
    request >> name >> query.search >> order >> descending >> first >> rows;
    const auto* const found = std::ranges::find(kTables, name, &ListedTable::name);
    if (found == std::end(kTables)) {
        return std::nullopt;
    }
    query.table = found;
    query.search.resize(std::min(query.search.size(), kLongestSearch));
    query.order = order <= found->columns.size() && *found->group == '\0' ? order : 0;
    query.isDescending = descending != 0;
    query.first = first;
    query.rows = std::min<int64_t>(rows, kMostListedRows);
    return query;
}

// Letters of either case match; the engines agree on this for ASCII.
std::wstring Pattern(const std::wstring& search) {
    std::wstring pattern = L"%";
    for (const wchar_t character : search) {
        if (std::wstring_view(L"%_[!").find(character) != std::wstring_view::npos) {
            pattern += L'!';
        }
        pattern += character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
    }
    return pattern + L"%";
}

std::string Where(const Dialect& dialect, const Query& query) {
    const ListedTable& table = *query.table;
    if (table.searched == 0) {
        return std::string(" WHERE ") + table.key + " = :search";
    }
    std::string sql;
    for (std::size_t i = 0; i < table.searched && !query.search.empty(); ++i) {
        sql += (sql.empty() ? " WHERE lower(CAST(" : " OR lower(CAST(") + std::string(table.columns[i]) + " AS " +
               dialect.plain + ") LIKE :search ESCAPE '!'";
    }
    return sql;
}

std::string OrderBy(const Query& query) {
    const ListedTable& table = *query.table;
    if (query.order == 0) {
        return std::string(" ORDER BY ") + table.order;
    }
    return " ORDER BY " + std::to_string(query.order) + (query.isDescending ? " DESC, " : ", ") + table.key;
}

void Bind(SqlStatement& statement, const Query& query) {
    statement.Bind(":search", query.table->searched == 0 ? query.search : Pattern(query.search));
    statement.Bind("@first", query.first).Bind("@rows", query.rows);
}

std::string Joined(Columns columns) {
    std::string text;
    for (const char* const column : columns) {
        text += (text.empty() ? "" : ", ") + std::string(column);
    }
    return text;
}

void AppendRows(SqlStatement& select, std::wstring& answer) {
    while (select.Step()) {
        for (int column = 0; column < select.Columns(); ++column) {
            answer += L'\t';
            answer += select.IsNumber(column) ? std::to_wstring(select.Number(column))
                                              : VisibleText(select.Text(column).substr(0, kLongestCell));
        }
    }
}

}  // namespace

std::optional<std::wstring> ListRows(SqlDb& db, CCmdProtocol& request) {
    const std::optional<Query> query = TakeQuery(request);
    if (!query) {
        return std::nullopt;
    }
    const ListedTable& table = *query->table;
    const Dialect& dialect = DialectOf(db.Engine());
    const std::string from = std::string(" FROM ") + table.from + Where(dialect, *query);
    int64_t total = 0;
    {
        SqlStatement count = db.Use("SELECT count(*)" + from);
        Bind(count, *query);
        total = count.Step() ? count.Number(0) : 0;
    }
    std::wstring answer = std::to_wstring(total) + L"\t" + std::to_wstring(table.columns.size());
    SqlStatement select =
        db.Use("SELECT " + Joined(table.columns) + from + table.group + OrderBy(*query) + dialect.page);
    Bind(select, *query);
    AppendRows(select, answer);
    return answer;
}

}  // namespace wrb
