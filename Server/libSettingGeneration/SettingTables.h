// The sections of the setting bundles as data: which keys, in which order, from which value.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "BundleValues.h"
#include "IniList.h"

namespace wrb {

enum class SettingRowKind : uint8_t {
    Bit,            // "1" or "0" from an option word
    Int,            // a number, shown signed
    List,           // a text with "|" between the items: their count, then a key an item
    ProtectedList,  // the same with every item protected, and the count behind the items
};

template <typename Values>
struct SettingRow {
    std::wstring_view key;  // Bit, Int
    SettingRowKind kind;
    uint32_t Values::*number = nullptr;    // Bit: the option word; Int
    uint32_t bits = 0;                     // Bit: the mask
    std::wstring Values::*text = nullptr;  // the lists
    IniListKeys list = {};                 // the lists
};

template <typename Values>
struct SettingTable {
    std::wstring_view section;
    std::span<const SettingRow<Values>> rows;
};

// A section that repeats a few keys for each of its items.
template <typename Values>
struct SettingItemRow {
    std::wstring_view name;  // of the key without its number
    const wchar_t* key;      // the same as a format for the number
    std::wstring Values::*text;
};

template <typename Values>
struct SettingItemTable {
    std::wstring_view section;
    std::wstring_view countKey;  // stands before the items
    std::span<const SettingItemRow<Values>> rows;
};

// Overloads, so that a template finds the table by the type of the values.
SettingTable<WtpValues> SettingTableOf(const WtpValues&) noexcept;
SettingTable<NcieValues> SettingTableOf(const NcieValues&) noexcept;
SettingTable<SampleSubmissionValues> SettingTableOf(const SampleSubmissionValues&) noexcept;
SettingTable<SablexValues> SettingTableOf(const SablexValues&) noexcept;
SettingTable<AggrScanValues> SettingTableOf(const AggrScanValues&) noexcept;
SettingItemTable<FARestoreValues> SettingTableOf(const FARestoreValues&) noexcept;
SettingItemTable<PolicyTrackingValues> SettingTableOf(const PolicyTrackingValues&) noexcept;

}  // namespace wrb
