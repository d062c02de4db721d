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

// A column of the table "agent", and where the file has its value.
struct AgentColumn {
    const char* group;  // the key of an object in the agent; null: in the agent itself
    const char* key;
    const char* column;
    bool isText;  // else a number
};

struct SeedValue {
    const AgentColumn* column = nullptr;
    std::wstring text;
    uint32_t number = 0;
};

struct SeedPolicy {
    std::wstring id;
    uint32_t action = 0;
    bool enable = false;
};

struct SeedAgent {
    std::wstring uid;
    std::vector<SeedValue> values;  // those that the file has
    std::vector<std::wstring> approvedSpyware;
    std::vector<std::wstring> restoreSessions;
    std::vector<SeedPolicy> policies;
    std::optional<StoredScans> scans;  // nothing: an agent without a configuration
    AgentBundles bundles;
};

struct SeedData {
    std::vector<SeedAgent> agents;
    std::optional<std::vector<bool>> serviceSwitches;  // in the order of the section
};

// The members of an agent's "scan".
struct SeedScanKey {
    std::string_view key;
    ScanType type;
};
inline constexpr SeedScanKey kSeedScanKeys[] = {
    {"manual", ScanType::MS},
    {"realTime", ScanType::RT},
    {"prescheduled", ScanType::PS},
    {"scanNow", ScanType::SN},
};

// Reads the whole file before anything is done with it. Throws SeedError, with the place in the file.
SeedData ReadSeedFile(const std::wstring& path);
SeedData ParseSeed(const std::string& utf8);

// The text that ParseSeed reads, indented.
std::string WriteSeed(const SeedData& seed);

// One of an agent's scan types: the keys of its INI section, "Flags", and the objects "spyware" and "exclusions".
StoredScan ParseSeedScan(ScanType type, const JsonNode& node);
Json::Value WriteSeedScan(ScanType type, const StoredScan& scan);

// An agent's setting bundles, from its members with a bundle key.
bool IsSeedBundleKey(std::string_view key);
AgentBundles ParseSeedBundles(const JsonNode& agent);
void WriteSeedBundles(const AgentBundles& bundles, Json::Value& agent);

}  // namespace wrb
