// The twelve scan-configuration groups as data: what an agent's section holds, in which order, and where each key's
// value comes from.
//
// Rendering a section, reading and writing the server-wide settings and reading an update use the same rows: a new key
// is one row in ScanGroupTables.cpp.
//
// Everything here is constant data, readable from any thread. Every view is of a literal: a NUL follows its end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace wrb {

// All values that a scan group can have; a group uses the members that its rows and its number and text lists name.
// The numbers are what the database stores; the integer keys show them as signed numbers.
struct ScanGroupValues {
    uint32_t flags = 0;  // the option word: one bit for most keys, laid out differently for each group
    uint32_t compressedLayer = 0;
    uint32_t oleLayer = 0;
    uint32_t possibleVirusCustActInActiveAct = 0;

    // Prescheduled scan only.
    uint32_t frequency = 0;
    uint32_t hour = 0;
    uint32_t minute = 0;
    uint32_t amPm = 0;
    uint32_t dayOfMonth = 0;
    uint32_t dayOfWeek = 0;
    uint32_t weekOrdinalOfMonth = 0;
    uint32_t weekdayOfMonth = 0;

    // Main groups. The database keeps one move folder: what comes from there has both folders alike.
    std::wstring extList;
    std::wstring moveDir;
    std::wstring cleanFailedMoveDir;
    std::wstring custAction;

    // Exclusion groups.
    std::wstring excludedFolder;
    std::wstring excludedFile;
    std::wstring excludedExt;

    // Spyware groups but the real-time one.
    std::wstring excludeFileExtList;

    friend bool operator==(const ScanGroupValues&, const ScanGroupValues&) = default;
};

enum class ScanType : uint8_t { MS, RT, PS, SN };  // manual, real-time, prescheduled, scan now
enum class ScanGroupKind : uint8_t { Main, Spyware, Exclusion };

using ScanNumber = uint32_t ScanGroupValues::*;
using ScanText = std::wstring ScanGroupValues::*;

// A number that is stored as option bits. The first arm of `shown` with one of its bits set in the word gives the
// number, otherwise `otherwise`; the arm of `stored` with the number gives the bits to set, none when no arm has it.
struct ScanChoice {
    struct Arm {
        uint32_t bits;
        uint32_t value;
    };
    std::array<Arm, 2> shown;
    uint32_t otherwise;
    std::array<Arm, 2> stored;

    constexpr uint32_t ValueOf(uint32_t flags) const noexcept {
        for (const Arm& arm : shown) {
            if ((flags & arm.bits) != 0) {
                return arm.value;
            }
        }
        return otherwise;
    }

    constexpr uint32_t BitsOf(uint32_t value) const noexcept {
        for (const Arm& arm : stored) {
            if (arm.value == value) {
                return arm.bits;
            }
        }
        return 0;
    }
};

enum class ScanRowKind : uint8_t {
    Uid,               // the agent's identifier; not a setting, never in an INI file
    Bit,               // "1" or "0" from the option word
    Int,               // a number member, shown signed
    Text,              // a text member as it stands
    Choice,            // a number derived from the option word
    CustomActionPair,  // a text member that is split into two keys when it carries the exploit marker
    Empty              // the key alone; not a setting, never in an INI file
};

struct ScanRow {
    std::wstring_view key;
    ScanRowKind kind;
    uint32_t bits = 0;                     // Bit: the mask
    ScanNumber number = nullptr;           // Int
    ScanText text = nullptr;               // Text, CustomActionPair
    const ScanChoice* choice = nullptr;    // Choice
    uint32_t defaultNumber = 0;            // what a missing INI key counts as: Bit, Int, Choice
    const wchar_t* defaultText = nullptr;  // the same for Text, CustomActionPair
    bool isUpdated = true;                 // it has a field in an update message
    std::wstring_view updateAfter = {};    // the key whose field it follows there; empty: as in the section

    constexpr bool IsSetting() const noexcept { return kind != ScanRowKind::Uid && kind != ScanRowKind::Empty; }
};

struct ScanGroup {
    ScanType type;
    ScanGroupKind kind;
    std::wstring_view name;            // as in function names and commands: "MSCfg", "MSCfgEx", "SpyMSCfg"
    std::wstring_view logTag;          // as in the log lines of main and exclusion groups: "ms", "msex"; else empty
    std::wstring_view section;         // the section's name, in the agent's text and in the scan INI
    uint32_t configFlag;               // the group's configuration-changed bit in the database
    std::wstring_view numbersCommand;  // the database command that answers with the numbers below
    std::span<const ScanRow> rows;     // the section's keys in their order

    // The values in the order of the database's answers and of containers. The numbers are the answer of
    // `numbersCommand`; of an exclusion group its first, the option word.
    std::span<const ScanNumber> numbers;
    std::span<const ScanText> texts;

    // An update message: the rows in the order of its fields, and the bits of the stored option word that it replaces.
    // A bit outside the mask is kept even if the message has a field for it.
    std::span<const ScanRow* const> updateRows;
    uint32_t updateMask;
};

// The mask of the switch "exclude the maker's own products": in the option word of a main group, shown by the
// exclusion section of the same scan type.
inline constexpr uint32_t kExcludeCallowayProductBit = uint32_t{1} << 16;

// Every group's configFlag at once.
inline constexpr uint32_t kAllScanConfigFlags = 0x1C507;

// In the order of the complete reply: MS, RT, PS, SN, and of each the main, the spyware and the exclusion group.
inline constexpr std::size_t kScanGroupCount = 12;
extern const std::array<ScanGroup, kScanGroupCount> kScanGroups;

constexpr std::size_t ScanGroupIndex(ScanType type, ScanGroupKind kind) noexcept {
    return static_cast<std::size_t>(type) * 3 + static_cast<std::size_t>(kind);
}

inline const ScanGroup& FindScanGroup(ScanType type, ScanGroupKind kind) noexcept {
    return kScanGroups[ScanGroupIndex(type, kind)];
}

}  // namespace wrb
