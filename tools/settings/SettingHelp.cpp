#include "SettingHelp.h"

#include <algorithm>
#include <iterator>

namespace wrb {
namespace {

// clang-format off
constexpr SettingHelp kMain[] = {
    {L"UID", "Agent", "The agent's identifier."},
    {L"Enable", "Scan enabled", "Switches this kind of scan on."},
    {L"IntelliScan", "Scan by true file type", "Chooses the files to scan by their content instead of their extension."},
    {L"ActiveAction", "Recommended actions", "Takes the actions that the pattern recommends for each type of threat."},
    {L"AllowCfg", "User may change settings", "Lets the agent's user change the settings of this scan."},
    {L"ScanMemory", "Scan memory", "Scans the memory of running programs."},
    {L"ScanBoot", "Scan boot area", "Scans the boot area of disks."},
    {L"ScanShutDown", "Scan at shutdown", "Scans removable disks when the computer shuts down."},
    {L"ScanCompressed", "Scan compressed files", "Scans the files inside archives."},
    {L"CompressedLayer", "Archive depth", "How many archives inside each other are opened.", 0, 255, "layers"},
    {L"RavageScanMemory", "Scan memory for packed malware", "Scans running programs for malware that unpacks itself."},
    {L"OleExploitDetection", "Detect exploits in documents", "Looks for exploits in embedded document objects."},
    {L"OleLayer", "Document depth", "How many embedded document objects inside each other are opened.", 0, 255, "layers"},
    {L"EnablePossibleVirusCustActInActiveAct", "Own action for possible viruses", "Replaces the recommended action for possible viruses by the one below."},
    {L"PossibleVirusCustActInActiveAct", "Action for possible viruses", "Number of the action for possible viruses, as agents know it.", 0, 255},
    {L"SystemCleanForPossibleVirus", "Clean up after possible viruses", "Runs the clean-up after a possible virus was found."},
    {L"DispPossibleVirusFoundAlert", "Message about possible viruses", "Shows a message when a possible virus was found."},
    {L"USBBootScan", "Scan USB disks at start", "Scans the boot area of USB disks when they are connected."},
    {L"USBScanTouch", "Scan USB disks", "Scans the files of USB disks when they are connected."},
    {L"ScanSpyware", "Scan for spyware", "Looks for spyware, too."},
    {L"ScanAllFiles", "Scan all files", "Scans every file, whatever its extension."},
    {L"ExtList", "File extensions", "Extensions of the files to scan, a comma between them."},
    {L"EnableExclusion", "Exclusions enabled", "Leaves out what the exclusion section names."},
    {L"Frequency", "Frequency", "Number of the rhythm of the schedule, as agents know it.", 0, 255},
    {L"Hour", "Hour", "Hour at which the scan starts.", 0, 23},
    {L"Minute", "Minute", "Minute at which the scan starts.", 0, 59},
    {L"AmPm", "Half of the day", "Number of the half of the day, as agents know it.", 0, 2},
    {L"DayOfMonth", "Day of the month", "Day of a monthly scan.", 0, 31},
    {L"DayOfWeek", "Day of the week", "Day of a weekly scan.", 0, 7},
    {L"WeekOrdinalOfMonth", "Week of the month", "Week of a monthly scan on a day of the week.", 0, 5},
    {L"WeekdayOfMonth", "Weekday of the month", "Day of a monthly scan on a day of the week.", 0, 7},
    {L"BkUpIfClean", "Back up before cleaning", "Keeps a copy of a file before it is cleaned."},
    {L"MoveDir", "Quarantine folder", "Folder to which infected files are moved."},
    {L"CleanFailedMoveDir", "Folder for uncleanable files", "Folder to which files are moved that could not be cleaned."},
    {L"ScanIncoming", "Scan files that are written", "Scans a file when it is created or changed."},
    {L"ScanOutgoing", "Scan files that are read", "Scans a file when it is opened."},
    {L"ScanHiddenFolder", "Scan hidden folders", "Scans hidden folders, too."},
    {L"EnableUniAct", "One action for all types", "Uses the same actions for every type of threat."},
    {L"CustAction", "Actions", "Items Name-first-second with a semicolon between them: the actions of each type of threat."},
    {L"ScanNetwork", "Scan network drives", "Scans connected network drives."},
    {L"PopVirusFoundAlert", "Message about viruses", "Shows a message when a virus was found."},
    {L"ScanSpeed", "Scan speed", "Number of the processor use, as agents know it."},
    {L"IntelliTrap", "Detect packed malware", "Looks for malware in compressed programs."},
    {L"AtseCveExploitAction", "Act on exploits", "Takes the exploit's own action when an exploit was found."},
    {L"ScanMethod", "Scan method", "Number of the scan method, as agents know it."},
    {L"EnableAggressiveClean", "Thorough clean-up", "Stops programs that a clean-up must replace."},
    {L"Reserved", "Reserved", "Always empty."},
};

constexpr SettingHelp kExclusion[] = {
    {L"UID", "Agent", "The agent's identifier."},
    {L"ExcludeCallowayProduct", "Leave out own products", "Leaves out the folders of the maker's own products."},
    {L"ExcludedFolder", "Folders", "Folders that are not scanned."},
    {L"ExcludedFile", "Files", "Files that are not scanned."},
    {L"ExcludedExt", "File extensions", "Extensions of files that are not scanned."},
};

constexpr SettingHelp kSpyware[] = {
    {L"UID", "Agent", "The agent's identifier."},
    {L"Enable", "Scan enabled", "Switches the scan for spyware on."},
    {L"AllowCfg", "User may change settings", "Lets the agent's user change the settings of this scan."},
    {L"ScanType", "Scan type", "Number of the scan's extent, as agents know it."},
    {L"ActionType", "Action", "Number of the action on spyware, as agents know it."},
    {L"PopSpywareFoundAlert", "Message about spyware", "Shows a message when spyware was found."},
    {L"EnableSpyExclusion", "Exclusions enabled", "Leaves out files with the extensions below."},
    {L"ExcludeFileExtList", "File extensions", "Extensions of files that are not scanned, a semicolon after each."},
};
// clang-format on

constexpr std::span<const SettingHelp> kByKind[] = {kMain, kSpyware, kExclusion};

}  // namespace

const SettingHelp* FindSettingHelp(ScanGroupKind kind, std::wstring_view key) noexcept {
    const auto rows = kByKind[static_cast<std::size_t>(kind)];
    const auto row = std::ranges::find(rows, key, &SettingHelp::key);
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace wrb
