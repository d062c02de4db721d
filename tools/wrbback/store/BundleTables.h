// The setting bundles in the database: a table each, whose columns behind uid (and position, where an agent has many)
// are the fields of the bundle's values in their order.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "BundleValues.h"

namespace wrb {

class SqliteDb;

// What the database keeps of one agent's bundles. An agent has at most one row of each but the last two.
struct AgentBundles {
    std::vector<WtpValues> webThreat;
    std::vector<NcieValues> ncie;
    std::vector<SablexValues> sablex;
    std::vector<AggrScanValues> aggrScan;
    std::vector<FARestoreValues> restoreItems;
    std::vector<PolicyTrackingValues> agentPolicies;
};

// The agent must exist and have no rows yet. Throws SqliteError.
void InsertBundles(SqliteDb& db, const std::wstring& uid, const AgentBundles& bundles);

// The agent's rows in their order; nothing for an agent that does not exist. `Values` is the type of a member above.
// Throws SqliteError.
template <typename Values>
std::optional<std::vector<Values>> ReadBundle(SqliteDb& db, const std::wstring& uid);

}  // namespace wrb
