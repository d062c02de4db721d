#include <string>

#include "SeedFile.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::string_view kFlags = "Flags";
constexpr std::string_view kSpyware = "spyware";
constexpr std::string_view kExclusions = "exclusions";

bool IsStored(const ScanRow& row) {
    return row.IsSetting() && !(row.kind == ScanRowKind::Text && row.text == &ScanGroupValues::cleanFailedMoveDir);
}

const ScanRow* FindRow(const ScanGroup& group, std::string_view key) {
    const std::wstring name = Utf8ToWide(key);
    for (const ScanRow& row : group.rows) {
        if (IsStored(row) && row.key == name) {
            return &row;
        }
    }
    return nullptr;
}

// Every bit that a value of the choice can set.
uint32_t BitsOfChoice(const ScanChoice& choice) {
    uint32_t bits = 0;
    for (const auto& arms : {choice.shown, choice.stored}) {
        for (const ScanChoice::Arm& arm : arms) {
            bits |= arm.bits;
        }
    }
    return bits;
}

uint32_t ReadChoice(const ScanChoice& choice, uint32_t flags, const JsonNode& node) {
    const uint32_t value = node.Number();
    const uint32_t cleared = flags & ~BitsOfChoice(choice);
    const uint32_t chosen = cleared | choice.BitsOf(value);
    if (choice.ValueOf(chosen) != value) {
        node.Fail("has no such value");
    }
    return chosen;
}

void ReadRow(const ScanRow& row, ScanGroupKind kind, const JsonNode& node, StoredScan& scan) {
    uint32_t& flags = scan.Flags(kind);
    switch (row.kind) {
        case ScanRowKind::Bit:
            flags = node.Bool() ? flags | row.bits : flags & ~row.bits;
            break;
        case ScanRowKind::Choice:
            flags = ReadChoice(*row.choice, flags, node);
            break;
        case ScanRowKind::Int:
            scan.values.*row.number = node.Number();
            break;
        default:
            scan.values.*row.text = node.Text();
            break;
    }
}

void ReadGroup(const ScanGroup& group, const JsonNode& node, StoredScan& scan) {
    if (const auto flags = node.Member(kFlags)) {
        scan.Flags(group.kind) = flags->Number();  // the whole word; the single keys go on top
    }
    node.ForEachMember([&](const std::string& key, const JsonNode& member) {
        if (const ScanRow* row = FindRow(group, key)) {
            ReadRow(*row, group.kind, member, scan);
        }
    });
}

// The numbers and texts of a group; its switches and choices are in the option word.
void WriteGroup(const ScanGroup& group, const StoredScan& scan, Json::Value& object) {
    for (const ScanRow& row : group.rows) {
        if (IsStored(row) && row.kind == ScanRowKind::Int) {
            object[WideToUtf8(row.key)] = scan.values.*row.number;
        } else if (IsStored(row) && row.text != nullptr) {
            object[WideToUtf8(row.key)] = WideToUtf8(scan.values.*row.text);
        }
    }
}

void RefuseUnknownKeys(const ScanGroup& group, const JsonNode& node) {
    const bool isMain = group.kind == ScanGroupKind::Main;
    node.ForEachMember([&](const std::string& key, const JsonNode& member) {
        if (key == "CleanFailedMoveDir" && isMain) {
            member.Fail("is not stored: the database keeps one move folder, MoveDir");
        }
        const bool isPart = isMain && (key == kSpyware || key == kExclusions);
        const bool isFlags = group.kind != ScanGroupKind::Exclusion && key == kFlags;
        if (!isPart && !isFlags && FindRow(group, key) == nullptr) {
            member.Fail("unknown key; the keys are those of the section " + WideToUtf8(group.section));
        }
    });
}

}  // namespace

StoredScan ParseSeedScan(ScanType type, const JsonNode& node) {
    StoredScan scan = DefaultScan(type);
    const struct {
        ScanGroupKind kind;
        std::optional<JsonNode> node;
    } parts[] = {
        {ScanGroupKind::Main, node},
        {ScanGroupKind::Spyware, node.Member(kSpyware)},
        {ScanGroupKind::Exclusion, node.Member(kExclusions)},  // after the main group: they share the option word
    };
    for (const auto& part : parts) {
        if (part.node) {
            const ScanGroup& group = FindScanGroup(type, part.kind);
            RefuseUnknownKeys(group, *part.node);
            ReadGroup(group, *part.node, scan);
        }
    }
    return scan;
}

Json::Value WriteSeedScan(ScanType type, const StoredScan& scan) {
    Json::Value object;
    object[std::string(kFlags)] = scan.values.flags;
    WriteGroup(FindScanGroup(type, ScanGroupKind::Main), scan, object);
    Json::Value& spyware = object[std::string(kSpyware)];
    spyware[std::string(kFlags)] = scan.spywareFlags;
    WriteGroup(FindScanGroup(type, ScanGroupKind::Spyware), scan, spyware);
    WriteGroup(FindScanGroup(type, ScanGroupKind::Exclusion), scan, object[std::string(kExclusions)]);
    return object;
}

}  // namespace wrb
