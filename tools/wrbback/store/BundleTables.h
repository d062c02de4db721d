// The setting bundles in the database: a table each, whose columns behind uid (and position, where an agent has many)
// are the fields of the bundle's values in their order.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "BundleValues.h"

namespace wrb {

class CSqliteDb;

// What the database keeps of one agent's bundles. An agent has at most one row of each but the last two.
struct tagAgentBundles {
    std::vector<tagWtpValues> webThreat;
    std::vector<tagNcieValues> ncie;
    std::vector<tagSablexValues> sablex;
    std::vector<tagAggrScanValues> aggrScan;
    std::vector<tagFARestoreValues> restoreItems;
    std::vector<tagPolicyTrackingValues> agentPolicies;
};

// The agent must exist and have no rows yet. Throws CSqliteError.
void InsertBundles(CSqliteDb& db, const std::wstring& uid, const tagAgentBundles& bundles);

// The agent's rows in their order; nothing for an agent that does not exist. `Values` is the type of a member above.
// Throws CSqliteError.
template <typename Values>
std::optional<std::vector<Values>> ReadBundle(CSqliteDb& db, const std::wstring& uid);

}  // namespace wrb
