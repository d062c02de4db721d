// The JSON file from which the database is filled; tools/wrbback/README.md describes it for its writers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BundleTables.h"
#include "JsonNode.h"
#include "ScanTable.h"

namespace wrb {

inline constexpr std::size_t kServiceSwitchCount = 11;

// A column of the table "agent", and where the file has its value.
struct AgentColumn {
    const char* group;  // the key of an object in the agent; null: in the agent itself
    const char* key;
    const char* column;
    bool isText;  // else a number
};

struct tagSeedValue {
    const AgentColumn* column = nullptr;
    std::wstring text;
    uint32_t number = 0;
};

struct tagSeedPolicy {
    std::wstring id;
    uint32_t action = 0;
    bool enable = false;
};

struct tagSeedAgent {
    std::wstring uid;
    std::vector<tagSeedValue> values;  // those that the file has
    std::vector<std::wstring> approvedSpyware;
    std::vector<std::wstring> restoreSessions;
    std::vector<tagSeedPolicy> policies;
    std::optional<StoredScans> scans;  // nothing: an agent without a configuration
    tagAgentBundles bundles;
};

struct tagSeed {
    std::vector<tagSeedAgent> agents;
    std::optional<std::vector<bool>> serviceSwitches;  // kServiceSwitchCount of them
};

// Reads the whole file before anything is done with it. Throws CSeedError, with the place in the file.
tagSeed ReadSeedFile(const std::wstring& path);
tagSeed ParseSeed(const std::string& utf8);

// One of an agent's scan types: the keys of its INI section, "Flags", and the objects "spyware" and "exclusions".
tagStoredScan ParseSeedScan(ScanType type, const CJsonNode& node);

// An agent's setting bundles, from its members with a bundle key.
bool IsSeedBundleKey(std::string_view key);
tagAgentBundles ParseSeedBundles(const CJsonNode& agent);

}  // namespace wrb
