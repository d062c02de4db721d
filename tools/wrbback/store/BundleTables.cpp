#include "BundleTables.h"

namespace wrb {
namespace {

template <typename Values>
std::string CreateSql() {
    std::string sql = std::string("CREATE TABLE ") + kBundle<Values>.table + " (\n    uid {caseless} " +
                      (kHasItems<Values> ? "NOT NULL" : "PRIMARY KEY") + " REFERENCES agent (uid) ON DELETE CASCADE";
    if (kHasItems<Values>) {
        sql += ",\n    position {number} NOT NULL";
    }
    const Values none;
    ForEachField<Values>(none, [&](const auto& row, const auto& /*field*/) {
        sql += std::string(",\n    ") + row.column + (row.number != nullptr ? " {number}" : " {text}") + " NOT NULL";
    });
    return sql + (kHasItems<Values> ? ",\n    PRIMARY KEY (uid, position)" : "") + "\n){keyed};\n";
}

template <typename Values>
std::string InsertSql() {
    std::string sql = std::string("INSERT INTO ") + kBundle<Values>.table + " VALUES (:uid";
    if (kHasItems<Values>) {
        sql += ", :position";
    }
    const Values none;
    ForEachField<Values>(none, [&](const auto& row, const auto& /*field*/) { sql += std::string(", :") + row.column; });
    return sql + ")";
}

template <typename Values>
void Insert(SqlDb& db, const std::wstring& uid, const std::vector<Values>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SqlStatement insert = db.Use(InsertSql<Values>());
        insert.Bind(":uid", uid).Bind(":position", static_cast<int64_t>(i));
        ForEachField<Values>(
            rows[i], [&](const auto& row, const auto& field) { insert.Bind(std::string(":") + row.column, field); });
        insert.Run();
    }
}

template <typename... Values>
std::vector<BundleTable> TablesOf(const std::tuple<std::vector<Values>...>&) {
    return {{kBundle<Values>.table, CreateSql<Values>()}...};
}

}  // namespace

std::vector<BundleTable> BundleTables() {
    return TablesOf(AgentBundles());
}

void InsertBundles(SqlDb& db, const std::wstring& uid, const AgentBundles& bundles) {
    std::apply([&](const auto&... rows) { (Insert(db, uid, rows), ...); }, bundles);
}

}  // namespace wrb
