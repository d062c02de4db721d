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

std::wstring ReadItems(const CJsonNode& node) {
    std::wstring list;
    node.ForEachElement([&](const CJsonNode& element) {
        const std::wstring item = element.Text();
        if (item.empty() || item.find(L'|') != std::wstring::npos) {
            element.Fail("must not be empty or hold \"|\", which ends an item");
        }
        list += (list.empty() ? L"" : L"|") + item;
    });
    return list;
}

template <typename Values>
void ReadRow(const SettingRow<Values>& row, const CJsonNode& node, Values& values) {
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

// An object with the keys of the bundle's section; none, one.
template <typename Values>
void ReadBundle(const CJsonNode& agent, std::string_view key, std::vector<Values>& rows) {
    const auto node = agent.Member(key);
    if (!node) {
        return;
    }
    Values& values = rows.emplace_back();
    node->ForEachMember([&](const std::string& name, const CJsonNode& member) {
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
void ReadItemList(const CJsonNode& agent, std::string_view key, std::vector<Values>& items) {
    const auto node = agent.Member(key);
    if (!node) {
        return;
    }
    node->ForEachElement([&](const CJsonNode& element) {
        Values& values = items.emplace_back();
        element.ForEachMember([&](const std::string& name, const CJsonNode& member) {
            const auto table = SettingTableOf(values).rows;
            const auto row = std::ranges::find(table, Utf8ToWide(name), &SettingItemRow<Values>::name);
            if (row == table.end()) {
                member.Fail("unknown key");
            }
            values.*row->text = member.Text();
        });
    });
}

}  // namespace

tagAgentBundles ParseSeedBundles(const CJsonNode& agent) {
    tagAgentBundles bundles;
    ReadBundle(agent, kBundleKeys[0], bundles.webThreat);
    ReadBundle(agent, kBundleKeys[1], bundles.ncie);
    ReadBundle(agent, kBundleKeys[2], bundles.sablex);
    ReadBundle(agent, kBundleKeys[3], bundles.aggrScan);
    ReadItemList(agent, kBundleKeys[4], bundles.restoreItems);
    ReadItemList(agent, kBundleKeys[5], bundles.agentPolicies);
    return bundles;
}

}  // namespace wrb
