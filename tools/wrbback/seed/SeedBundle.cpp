#include <algorithm>
#include <string>

#include "SeedFile.h"
#include "Text.h"

namespace wrb {
namespace {

template <typename Values>
std::string KeyOf(const BundleRow<Values>& row) {
    const std::wstring_view key = row.seedKey != nullptr ? row.seedKey : row.key;
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
void ReadRow(const BundleRow<Values>& row, const JsonNode& node, Values& values) {
    switch (row.kind) {
        case BundleRowKind::Bit:
            values.*row.number |= node.Bool() ? row.bits : 0;
            break;
        case BundleRowKind::Int:
            values.*row.number = node.Number();
            break;
        case BundleRowKind::Text:
            values.*row.text = node.Text();
            break;
        case BundleRowKind::List:
        case BundleRowKind::ProtectedList:
            values.*row.text = ReadItems(node);
            break;
    }
}

// An object with the keys of the bundle's section.
template <typename Values>
Values ReadRecord(const JsonNode& node) {
    Values values;
    node.ForEachMember([&](const std::string& name, const JsonNode& member) {
        const auto rows = kBundle<Values>.rows;
        const auto row = std::ranges::find(rows, name, KeyOf<Values>);
        if (row == rows.end()) {
            member.Fail("unknown key");
        }
        ReadRow(*row, member, values);
    });
    return values;
}

// A record, or a list of them.
template <typename Values>
void ReadBundle(const JsonNode& agent, std::vector<Values>& records) {
    const auto node = agent.Member(kBundle<Values>.seedKey);
    if (node && kHasItems<Values>) {
        node->ForEachElement([&](const JsonNode& element) { records.push_back(ReadRecord<Values>(element)); });
    } else if (node) {
        records.push_back(ReadRecord<Values>(*node));
    }
}

Json::Value WriteItems(std::wstring_view list) {
    Json::Value items(Json::arrayValue);
    while (!list.empty()) {
        const std::wstring_view item = list.substr(0, list.find(L'|'));
        items.append(WideToUtf8(item));
        list.remove_prefix(std::min(list.size(), item.size() + 1));
    }
    return items;
}

// What differs from a new record.
template <typename Values>
Json::Value WriteRecord(const Values& values) {
    Json::Value object(Json::objectValue);
    for (const BundleRow<Values>& row : kBundle<Values>.rows) {
        if (row.kind == BundleRowKind::Bit && (values.*row.number & row.bits) != 0) {
            object[KeyOf(row)] = true;
        } else if (row.kind == BundleRowKind::Int && values.*row.number != 0) {
            object[KeyOf(row)] = values.*row.number;
        } else if (row.kind == BundleRowKind::Text && !(values.*row.text).empty()) {
            object[KeyOf(row)] = WideToUtf8(values.*row.text);
        } else if (row.text != nullptr && !(values.*row.text).empty()) {
            object[KeyOf(row)] = WriteItems(values.*row.text);
        }
    }
    return object;
}

template <typename Values>
void WriteBundle(const std::vector<Values>& records, Json::Value& agent) {
    for (const Values& record : records) {
        if (kHasItems<Values>) {
            agent[kBundle<Values>.seedKey].append(WriteRecord(record));
        } else {
            agent[kBundle<Values>.seedKey] = WriteRecord(record);
        }
    }
}

template <typename... Values>
bool IsKeyOfOne(std::string_view key, const std::tuple<std::vector<Values>...>&) {
    return ((key == kBundle<Values>.seedKey) || ...);
}

}  // namespace

bool IsSeedBundleKey(std::string_view key) {
    return IsKeyOfOne(key, AgentBundles());
}

AgentBundles ParseSeedBundles(const JsonNode& agent) {
    AgentBundles bundles;
    std::apply([&](auto&... records) { (ReadBundle(agent, records), ...); }, bundles);
    return bundles;
}

void WriteSeedBundles(const AgentBundles& bundles, Json::Value& agent) {
    std::apply([&agent](const auto&... records) { (WriteBundle(records, agent), ...); }, bundles);
}

}  // namespace wrb
