#include "JsonText.h"
#include "ScanGroup.h"
#include "SeedFile.h"
#include "SettingContainer.h"
#include "Text.h"

namespace wrb {
namespace {

void WriteValues(const std::vector<SeedValue>& values, Json::Value& agent) {
    for (const SeedValue& value : values) {
        const AgentColumn& column = *value.column;
        Json::Value& owner = column.group == nullptr ? agent : agent[column.group];
        owner[column.key] = column.isText ? Json::Value(WideToUtf8(value.text)) : Json::Value(value.number);
    }
}

void WriteTexts(const std::vector<std::wstring>& texts, Json::Value& list) {
    for (const std::wstring& text : texts) {
        list.append(WideToUtf8(text));
    }
}

Json::Value WriteAgent(const SeedAgent& agent) {
    Json::Value value;
    value["uid"] = WideToUtf8(agent.uid);
    WriteValues(agent.values, value);
    if (!agent.approvedSpyware.empty()) {
        WriteTexts(agent.approvedSpyware, value["approvedSpyware"]);
    }
    if (!agent.restoreSessions.empty()) {
        WriteTexts(agent.restoreSessions, value["restoreSessions"]);
    }
    for (const SeedPolicy& policy : agent.policies) {
        Json::Value& entry = value["behaviourPolicies"].append(Json::objectValue);
        entry["id"] = WideToUtf8(policy.id);
        entry["action"] = policy.action;
        entry["enable"] = policy.enable;
    }
    WriteSeedBundles(agent.bundles, value);
    if (agent.scans) {
        for (const SeedScanKey& row : kSeedScanKeys) {
            value["scan"][std::string(row.key)] =
                WriteSeedScan(row.type, agent.scans->at(static_cast<std::size_t>(row.type)));
        }
    }
    return value;
}

}  // namespace

std::string WriteSeed(const SeedData& seed) {
    Json::Value root;
    root["agents"] = Json::arrayValue;
    for (const SeedAgent& agent : seed.agents) {
        root["agents"].append(WriteAgent(agent));
    }
    if (seed.serviceSwitches) {
        std::size_t i = 0;
        for (const auto& row : kServiceSwitchRows) {
            root["serviceSwitch"][WideToUtf8(row.key)] = static_cast<bool>(seed.serviceSwitches->at(i++));
        }
    }
    return JsonText(root);
}

}  // namespace wrb
