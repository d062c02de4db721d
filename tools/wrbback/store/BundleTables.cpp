#include "BundleTables.h"

#include "SqliteDb.h"

namespace wrb {
namespace {

struct BundleTable {
    const char* name;
    bool hasPosition;  // many rows an agent
};

template <typename Values>
constexpr BundleTable kTable{};
template <>
constexpr BundleTable kTable<WtpValues>{"web_threat", false};
template <>
constexpr BundleTable kTable<NcieValues>{"ncie", false};
template <>
constexpr BundleTable kTable<SablexValues>{"sablex", false};
template <>
constexpr BundleTable kTable<AggrScanValues>{"aggr_scan", false};
template <>
constexpr BundleTable kTable<FARestoreValues>{"fa_restore_item", true};
template <>
constexpr BundleTable kTable<PolicyTrackingValues>{"agent_policy", true};

template <typename Values>
constexpr int kFirstField = kTable<Values>.hasPosition ? 2 : 1;

template <typename Values>
std::string InsertSql() {
    constexpr int kColumns = kFirstField<Values> + std::tuple_size_v<decltype(Values::Fields())>;
    std::string sql = std::string("INSERT INTO ") + kTable<Values>.name + " VALUES (?1";
    for (int column = 2; column <= kColumns; ++column) {
        sql += ", ?" + std::to_string(column);
    }
    return sql + ")";
}

template <typename Values>
void Insert(SqliteDb& db, const std::wstring& uid, const std::vector<Values>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SqliteStatement insert = db.Use(InsertSql<Values>());
        // The position's parameter is the first field's where there is none, and is bound again below.
        insert.Bind("?1", uid).Bind("?2", static_cast<int64_t>(i));
        int parameter = kFirstField<Values>;
        const auto bind = [&](const auto& value) { insert.Bind(("?" + std::to_string(++parameter)).c_str(), value); };
        std::apply([&](auto... field) { (bind(rows[i].*field), ...); }, Values::Fields());
        insert.Run();
    }
}

void Take(const SqliteStatement& read, int column, uint32_t& value) {
    value = static_cast<uint32_t>(read.Number(column));
}
void Take(const SqliteStatement& read, int column, std::wstring& value) {
    value = read.Text(column);
}

}  // namespace

void InsertBundles(SqliteDb& db, const std::wstring& uid, const AgentBundles& bundles) {
    Insert(db, uid, bundles.webThreat);
    Insert(db, uid, bundles.ncie);
    Insert(db, uid, bundles.sablex);
    Insert(db, uid, bundles.aggrScan);
    Insert(db, uid, bundles.restoreItems);
    Insert(db, uid, bundles.agentPolicies);
}

template <typename Values>
std::optional<std::vector<Values>> ReadBundle(SqliteDb& db, const std::wstring& uid) {
    constexpr BundleTable table = kTable<Values>;
    SqliteStatement read = db.Use(std::string("SELECT bundle.* FROM agent LEFT JOIN ") + table.name +
                                  " AS bundle ON bundle.uid = agent.uid WHERE agent.uid = :uid" +
                                  (table.hasPosition ? " ORDER BY bundle.position" : ""));
    read.Bind(":uid", uid);
    std::optional<std::vector<Values>> rows;
    while (read.Step()) {
        if (!rows) {
            rows.emplace();
        }
        if (!read.IsNull(0)) {  // else the agent alone
            Values& values = rows->emplace_back();
            int column = kFirstField<Values>;
            std::apply([&](auto... field) { (Take(read, column++, values.*field), ...); }, Values::Fields());
        }
    }
    return rows;
}

template std::optional<std::vector<WtpValues>> ReadBundle(SqliteDb&, const std::wstring&);
template std::optional<std::vector<NcieValues>> ReadBundle(SqliteDb&, const std::wstring&);
template std::optional<std::vector<SablexValues>> ReadBundle(SqliteDb&, const std::wstring&);
template std::optional<std::vector<AggrScanValues>> ReadBundle(SqliteDb&, const std::wstring&);
template std::optional<std::vector<FARestoreValues>> ReadBundle(SqliteDb&, const std::wstring&);
template std::optional<std::vector<PolicyTrackingValues>> ReadBundle(SqliteDb&, const std::wstring&);

}  // namespace wrb
