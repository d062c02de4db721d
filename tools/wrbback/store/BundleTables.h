// The setting bundles in the database: a table each, whose columns after uid (and position, where an agent has many
// records) are the fields of the bundle in their order on the wire.
#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "Bundles.h"
#include "SqlDb.h"

namespace wrb {

template <typename... Values>
auto StoredOf(const std::tuple<Values...>&) -> decltype(std::tuple_cat(
    std::conditional_t<kBundle<Values>.table != nullptr, std::tuple<std::vector<Values>>, std::tuple<>>()...));

// What the database keeps of one agent's bundles. Only a bundle with items has more than one record.
using AgentBundles = decltype(StoredOf(Bundles()));

template <typename Values>
inline constexpr int kFirstBundleColumn = kHasItems<Values> ? 2 : 1;

struct BundleTable {
    const char* name;
    std::string create;  // CREATE TABLE, in the words of the schema (Dialect.h)
};
std::vector<BundleTable> BundleTables();

// The agent must exist and have no rows yet. Throws SqlError.
void InsertBundles(SqlDb& db, const std::wstring& uid, const AgentBundles& bundles);

inline void TakeColumn(const SqlStatement& read, int column, uint32_t& value) {
    value = static_cast<uint32_t>(read.Number(column));
}
inline void TakeColumn(const SqlStatement& read, int column, std::wstring& value) {
    value = read.Text(column);
}

// The agent's rows in their order; nothing for an agent that does not exist. Throws SqlError.
template <typename Values>
std::optional<std::vector<Values>> ReadBundle(SqlDb& db, const std::wstring& uid) {
    SqlStatement read = db.Use(std::string("SELECT bundle.* FROM agent LEFT JOIN ") + kBundle<Values>.table +
                               " AS bundle ON bundle.uid = agent.uid WHERE agent.uid = :uid" +
                               (kHasItems<Values> ? " ORDER BY bundle.position" : ""));
    read.Bind(":uid", uid);
    std::optional<std::vector<Values>> rows;
    while (read.Step()) {
        if (!rows) {
            rows.emplace();
        }
        if (!read.IsNull(0)) {  // else the agent alone
            int column = kFirstBundleColumn<Values>;
            ForEachField<Values>(rows->emplace_back(),
                                 [&](const auto& /*row*/, auto& field) { TakeColumn(read, column++, field); });
        }
    }
    return rows;
}

}  // namespace wrb
