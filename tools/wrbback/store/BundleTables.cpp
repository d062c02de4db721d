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
constexpr BundleTable kTable<tagWtpValues>{"web_threat", false};
template <>
constexpr BundleTable kTable<tagNcieValues>{"ncie", false};
template <>
constexpr BundleTable kTable<tagSablexValues>{"sablex", false};
template <>
constexpr BundleTable kTable<tagAggrScanValues>{"aggr_scan", false};
template <>
constexpr BundleTable kTable<tagFARestoreValues>{"fa_restore_item", true};
template <>
constexpr BundleTable kTable<tagPolicyTrackingValues>{"agent_policy", true};

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
void Insert(CSqliteDb& db, const std::wstring& uid, const std::vector<Values>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        CSqliteStatement insert = db.Use(InsertSql<Values>());
        // The position's parameter is the first field's where there is none, and is bound again below.
        insert.Bind("?1", uid).Bind("?2", static_cast<int64_t>(i));
        int parameter = kFirstField<Values>;
        const auto bind = [&](const auto& value) { insert.Bind(("?" + std::to_string(++parameter)).c_str(), value); };
        std::apply([&](auto... field) { (bind(rows[i].*field), ...); }, Values::Fields());
        insert.Run();
    }
}

void Take(const CSqliteStatement& read, int column, uint32_t& value) {
    value = static_cast<uint32_t>(read.Number(column));
}
void Take(const CSqliteStatement& read, int column, std::wstring& value) {
    value = read.Text(column);
}

}  // namespace

void InsertBundles(CSqliteDb& db, const std::wstring& uid, const tagAgentBundles& bundles) {
    Insert(db, uid, bundles.webThreat);
    Insert(db, uid, bundles.ncie);
    Insert(db, uid, bundles.sablex);
    Insert(db, uid, bundles.aggrScan);
    Insert(db, uid, bundles.restoreItems);
    Insert(db, uid, bundles.agentPolicies);
}

template <typename Values>
std::optional<std::vector<Values>> ReadBundle(CSqliteDb& db, const std::wstring& uid) {
    constexpr BundleTable table = kTable<Values>;
    CSqliteStatement read = db.Use(std::string("SELECT bundle.* FROM agent LEFT JOIN ") + table.name +
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

template std::optional<std::vector<tagWtpValues>> ReadBundle(CSqliteDb&, const std::wstring&);
template std::optional<std::vector<tagNcieValues>> ReadBundle(CSqliteDb&, const std::wstring&);
template std::optional<std::vector<tagSablexValues>> ReadBundle(CSqliteDb&, const std::wstring&);
template std::optional<std::vector<tagAggrScanValues>> ReadBundle(CSqliteDb&, const std::wstring&);
template std::optional<std::vector<tagFARestoreValues>> ReadBundle(CSqliteDb&, const std::wstring&);
template std::optional<std::vector<tagPolicyTrackingValues>> ReadBundle(CSqliteDb&, const std::wstring&);

}  // namespace wrb
