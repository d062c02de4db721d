// Changes of scan settings: parsed, merged with what is stored, checked, written.
//
// A uid names an agent; an empty one stands for the server-wide defaults in the scan INI, to which ScanIniCache must be
// bound. Texts that say what is wrong are for people, in UTF-8.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "SettingCatalog.h"

namespace wrb {

struct SettingAssignment {
    const SettingInfo* setting = nullptr;
    std::wstring value;
};

// "SECTION.KEY=VALUE". On failure nothing, and `wrong` says why, with the nearest name.
std::optional<SettingAssignment> ParseAssignment(std::wstring_view text, std::string& wrong);

struct SettingChange {
    const SettingInfo* setting;
    std::wstring before;
    std::wstring after;
};

// One group of one agent, or of the server.
struct GroupChange {
    const ScanGroup* group = nullptr;
    ScanGroupValues before;
    ScanGroupValues after;
    std::vector<SettingChange> changes;  // the keys whose values differ
};

struct SettingFault {
    const SettingInfo* setting;
    std::string wrong;
};

struct MergedChanges {
    std::vector<GroupChange> groups;        // those that change, in the order of kScanGroups
    std::vector<SettingFault> faults;       // nothing may be written then
    const ScanGroup* unreadable = nullptr;  // this group could not be read: the agent is not known or has no settings
};

// Reads each group that the assignments name and puts them in. Of two for one key the last one counts. Waits for the
// database, two requests a group.
MergedChanges MergeChanges(std::span<const SettingAssignment> assignments, const std::wstring& uid);

// The keys of a group whose values differ.
std::vector<SettingChange> CompareGroups(const ScanGroup& group, const ScanGroupValues& before,
                                         const ScanGroupValues& after);

// Writes what differs, by the update functions of the library: option bits that do not change keep the value that they
// have in the database now; the numbers and texts of the group are written as they were read. The agent is marked as
// changed. False when a request or the file failed; the debug log says why.
bool StoreChange(const GroupChange& change, const std::wstring& uid);

// Whether what is stored now has the new values. The database works off a write some time after it was sent.
bool IsStored(const GroupChange& change, const std::wstring& uid);

}  // namespace wrb
