#include "SeedFile.h"

#include <json/reader.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <system_error>

#include "AgentColumns.h"
#include "AgentUid.h"
#include "Text.h"
#include "Utf8.h"

namespace wrb {
namespace {

constexpr std::size_t kMostFileBytes = 256u << 20;

std::wstring ReadUid(const JsonNode& node) {
    std::wstring uid = node.Text();
    if (!HasUidForm(uid)) {
        node.Fail("must be a GUID of the form " + std::string(kUidForm) + ", x a hexadecimal digit");
    }
    return uid;
}

// The agent's plain values: its own members and those of the objects in it that the table of columns names.
void ReadValues(const JsonNode& agent, std::vector<SeedValue>& values) {
    for (const AgentColumn& column : AgentColumns()) {
        const auto owner = column.group == nullptr ? std::optional(agent) : agent.Member(column.group);
        const auto node = owner ? owner->Member(column.key) : std::nullopt;
        if (node) {
            SeedValue& value = values.emplace_back(SeedValue{&column, {}, 0});
            if (column.isText) {
                value.text = node->Text();
            } else {
                value.number = node->Number();
            }
        }
    }
}

void RefuseUnknownValues(const JsonNode& agent) {
    const auto isColumn = [](std::string_view group, std::string_view key) {
        return std::ranges::any_of(AgentColumns(), [&](const AgentColumn& column) {
            return group == (column.group != nullptr ? column.group : "") && key == column.key;
        });
    };
    const auto isGroup = [](std::string_view key) {
        return std::ranges::any_of(
            AgentColumns(), [&](const AgentColumn& column) { return column.group != nullptr && key == column.group; });
    };
    constexpr std::string_view kOthers[] = {"uid", "scan", "approvedSpyware", "restoreSessions", "behaviourPolicies",
                                            "note"};
    agent.RefuseUnknown([&](std::string_view key) {
        return isColumn("", key) || isGroup(key) || std::ranges::find(kOthers, key) != std::end(kOthers) ||
               IsSeedBundleKey(key);
    });
    agent.ForEachMember([&](const std::string& group, const JsonNode& node) {
        if (isGroup(group)) {
            node.RefuseUnknown([&](std::string_view key) { return isColumn(group, key); });
        }
    });
}

std::vector<std::wstring> ReadTexts(const JsonNode& agent, std::string_view key) {
    std::vector<std::wstring> texts;
    if (const auto list = agent.Member(key)) {
        list->ForEachElement([&](const JsonNode& element) {
            if (texts.emplace_back(element.Text()).empty()) {
                element.Fail("must not be empty: an empty text ends the list");
            }
        });
    }
    return texts;
}

std::vector<SeedPolicy> ReadPolicies(const JsonNode& agent) {
    std::vector<SeedPolicy> policies;
    if (const auto list = agent.Member("behaviourPolicies")) {
        list->ForEachElement([&](const JsonNode& element) {
            element.RefuseUnknown({"id", "action", "enable"});
            policies.push_back({element.Required("id").Text(), element.Required("action").Number(),
                                element.Required("enable").Bool()});
        });
    }
    return policies;
}

std::optional<StoredScans> ReadScansOf(const JsonNode& agent) {
    const auto node = agent.Member("scan");
    if (!node) {
        return std::nullopt;
    }
    node->RefuseUnknown([](std::string_view key) {
        return std::ranges::find(kSeedScanKeys, key, &SeedScanKey::key) != std::end(kSeedScanKeys);
    });
    StoredScans scans;
    for (const SeedScanKey& row : kSeedScanKeys) {
        const auto scan = node->Member(row.key);
        scans[static_cast<std::size_t>(row.type)] = scan ? ParseSeedScan(row.type, *scan) : DefaultScan(row.type);
    }
    return scans;
}

SeedAgent ReadAgent(const JsonNode& node) {
    RefuseUnknownValues(node);
    SeedAgent agent;
    agent.uid = ReadUid(node.Required("uid"));
    ReadValues(node, agent.values);
    agent.approvedSpyware = ReadTexts(node, "approvedSpyware");
    agent.restoreSessions = ReadTexts(node, "restoreSessions");
    agent.policies = ReadPolicies(node);
    agent.scans = ReadScansOf(node);
    agent.bundles = ParseSeedBundles(node);
    return agent;
}

std::vector<bool> ReadServiceSwitches(const JsonNode& node) {
    node.RefuseUnknown([](std::string_view key) {
        const std::wstring name = Utf8ToWide(key);
        return std::ranges::any_of(kServiceSwitchRows, [&](const auto& row) { return row.key == name; });
    });
    std::vector<bool> switches;
    for (const auto& row : kServiceSwitchRows) {
        const auto member = node.Member(WideToUtf8(row.key));
        switches.push_back(!member || member->Bool());
    }
    return switches;
}

Json::Value ParseJson(const std::string& utf8) {
    Json::CharReaderBuilder builder;
    builder["rejectDupKeys"] = true;
    builder["failIfExtra"] = true;
    builder["stackLimit"] = 100;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const std::size_t start = utf8.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    Json::Value root;
    std::string errors;
    try {
        if (reader->parse(utf8.data() + start, utf8.data() + utf8.size(), &root, &errors)) {
            return root;
        }
    } catch (const Json::Exception& error) {  // what nests too deep
        errors = error.what();
    }
    throw SeedError("not JSON:\n" + errors);
}

}  // namespace

SeedData ParseSeed(const std::string& utf8) {
    if (!IsUtf8(utf8)) {
        throw SeedError("the file: is not UTF-8");
    }
    if (utf8.find('\0') != std::string::npos) {  // the reader takes it for the end
        throw SeedError("the file: holds a NUL");
    }
    const Json::Value value = ParseJson(utf8);
    const JsonNode root(value);
    root.RefuseUnknown({"agents", "serviceSwitch", "note"});
    SeedData seed;
    std::map<std::wstring, std::size_t> seen;
    root.Required("agents").ForEachElement([&](const JsonNode& node) {
        const SeedAgent& agent = seed.agents.emplace_back(ReadAgent(node));
        const auto [first, isNew] = seen.emplace(FoldedUid(agent.uid), seed.agents.size() - 1);
        if (!isNew) {
            node.Required("uid").Fail("is the uid of agents[" + std::to_string(first->second) + "] too");
        }
    });
    if (const auto switches = root.Member("serviceSwitch")) {
        seed.serviceSwitches = ReadServiceSwitches(*switches);
    }
    return seed;
}

SeedData ReadSeedFile(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) {
        throw SeedError("cannot be opened: " + std::generic_category().message(errno));
    }
    std::error_code error;
    if (std::filesystem::file_size(path, error) > kMostFileBytes && !error) {
        throw SeedError("is larger than 256 MiB");
    }
    return ParseSeed(std::string(std::istreambuf_iterator<char>(file), {}));
}

}  // namespace wrb
