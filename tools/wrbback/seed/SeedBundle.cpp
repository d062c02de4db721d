#include <algorithm>
#include <string>

#include "SeedFile.h"
#include "SettingTables.h"
#include "Text.h"

namespace wrb {
namespace {

// Where the file has a row: a list under the key of its items, without their number.
template <typename Values>
std::string KeyOf(const SettingRow<Values>& row) {
    const std::wstring_view key = row.key.empty() ? std::wstring_view(row.list.item) : row.key;
    return WideToUtf8(key.substr(0, key.find(L'%')));
}

std::wstring ReadItems(const JsonNode& node) {
    std::wstring list;
    node.ForEachElement([&](const JsonNode& element) {
        const std::wstring item = element.Text();
        if (item.empty() || item.find(L'|') != std::wstring::npos) {
            element.Fail("must not be empty or hold \"|\", which ends an item");
        }
        list += (list.empty() ? L"" : L"|") + item;
    });
    return list;
}

template <typename Values>
void ReadRow(const SettingRow<Values>& row, const JsonNode& node, Values& values) {
    switch (row.kind) {
        case SettingRowKind::Bit:
            values.*row.number |= node.Bool() ? row.bits : 0;
            break;
        case SettingRowKind::Int:
            values.*row.number = node.Number();
            break;
        case SettingRowKind::List:
        case SettingRowKind::ProtectedList:
            values.*row.text = ReadItems(node);
            break;
    }
}

// An object with the keys of the bundle's section.
template <typename Values>
void ReadBundle(const JsonNode& node, std::vector<Values>& rows) {
    Values& values = rows.emplace_back();
    node.ForEachMember([&](const std::string& name, const JsonNode& member) {
        const auto table = SettingTableOf(values).rows;
        const auto row = std::ranges::find(table, name, KeyOf<Values>);
        if (row == table.end()) {
            member.Fail("unknown key");
        }
        ReadRow(*row, member, values);
    });
}

// A list of objects, all of whose members are texts.
template <typename Values>
void ReadItemList(const JsonNode& node, std::vector<Values>& items) {
    node.ForEachElement([&](const JsonNode& element) {
        Values& values = items.emplace_back();
        element.ForEachMember([&](const std::string& name, const JsonNode& member) {
            const auto table = SettingTableOf(values).rows;
            const auto row = std::ranges::find(table, Utf8ToWide(name), &SettingItemRow<Values>::name);
            if (row == table.end()) {
                member.Fail("unknown key");
            }
            values.*row->text = member.Text();
        });
    });
}

constexpr struct {
    std::string_view key;
    void (*read)(const JsonNode& node, AgentBundles& bundles);
} kBundles[] = {
    {"webThreat", [](const JsonNode& node, AgentBundles& b) { ReadBundle(node, b.webThreat); }},
    {"ncie", [](const JsonNode& node, AgentBundles& b) { ReadBundle(node, b.ncie); }},
    {"sablex", [](const JsonNode& node, AgentBundles& b) { ReadBundle(node, b.sablex); }},
    {"aggrScan", [](const JsonNode& node, AgentBundles& b) { ReadBundle(node, b.aggrScan); }},
    {"restoreItems", [](const JsonNode& node, AgentBundles& b) { ReadItemList(node, b.restoreItems); }},
    {"agentPolicies", [](const JsonNode& node, AgentBundles& b) { ReadItemList(node, b.agentPolicies); }},
};

}  // namespace

bool IsSeedBundleKey(std::string_view key) {
    return std::ranges::any_of(kBundles, [&](const auto& bundle) { return bundle.key == key; });
}

AgentBundles ParseSeedBundles(const JsonNode& agent) {
    AgentBundles bundles;
    for (const auto& bundle : kBundles) {
        if (const auto node = agent.Member(bundle.key)) {
            bundle.read(*node, bundles);
        }
    }
    return bundles;
}

}  // namespace wrb
