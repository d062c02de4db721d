// Every key of the twelve scan groups as people see it: made from the tables that the library renders with.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ScanGroup.h"
#include "SettingHelp.h"

namespace wrb {

enum class SettingKind : uint8_t {
    Switch,  // 1 or 0
    Number,  // within the help's range
    Choice,  // one of a few numbers
    Text,
    Fixed,  // shown, not set: the uid, and keys without a value
};

// "switch", "number", ...
const char* NameOf(SettingKind kind) noexcept;

struct SettingInfo {
    const ScanGroup* group;
    const ScanRow* row;
    SettingKind kind;
    const SettingHelp* help;

    std::wstring_view Section() const noexcept { return group->section; }
    std::wstring_view Key() const noexcept { return row->key; }
    std::wstring Name() const { return std::wstring(Section()) + L"." + std::wstring(Key()); }

    // What a missing key of the scan INI counts as; empty for a fixed key.
    std::wstring Default() const;

    // The numbers of a switch or a choice, ascending.
    std::vector<uint32_t> Choices() const;

    // What a value may be, for people: "0 or 1", "0 to 255 layers", "a text".
    std::string Range() const;

    // A value for people: "on" or "off" for a switch, "empty" for an empty text, else as it is. UTF-8.
    std::string Shown(std::wstring_view value) const;

    // The database keeps one move folder, so an agent's second one cannot be set.
    bool IsSetFor(bool agent) const noexcept;
};

// In the order of kScanGroups, and of the keys in their sections.
std::span<const SettingInfo> SettingCatalog();

// A group by its section or its short name ("MSCfg"), in letters of any case; null when there is none.
const ScanGroup* FindScanSection(std::wstring_view name) noexcept;

// Null when the section has no such key; letters of any case.
const SettingInfo* FindSetting(const ScanGroup& group, std::wstring_view key);

// "SECTION.KEY" or "SECTION" as on a command line. The part after the last point is the key.
struct SettingName {
    std::wstring section;
    std::wstring key;  // empty: the whole section
};
SettingName ParseSettingName(std::wstring_view text);

// The nearest (NearestName.h) of the short names and sections, or of the keys of a group.
std::wstring_view NearestSection(std::wstring_view text);
std::wstring_view NearestKey(const ScanGroup& group, std::wstring_view text);

}  // namespace wrb
