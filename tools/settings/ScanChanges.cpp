#include "ScanChanges.h"

#include <algorithm>

#include "AgentSections.h"
#include "INICache.h"
#include "IgnoringCase.h"
#include "NearestName.h"
#include "ScanRowText.h"
#include "SettingValue.h"
#include "Text.h"
#include "cmdhm_ScanCfg.h"
#include "cmdhm_ScanCfgUpdate.h"

namespace wrb {

std::optional<SettingAssignment> ParseAssignment(std::wstring_view text, std::string& wrong) {
    const std::size_t equals = text.find(L'=');
    const SettingName name = ParseSettingName(text.substr(0, equals));
    const std::string shown = "\"" + WideToUtf8(text) + "\"";
    if (equals == text.npos || name.key.empty()) {
        wrong = shown + " is not SECTION.KEY=VALUE";
        return std::nullopt;
    }
    const ScanGroup* const group = FindScanSection(name.section);
    if (group == nullptr) {
        const bool isKnown = std::ranges::any_of(
            KnownSections(), [&](std::wstring_view known) { return EqualIgnoringCase(known, name.section); });
        wrong = isKnown ? "[" + WideToUtf8(name.section) + "] cannot be changed here, only the twelve scan sections"
                        : "no section \"" + WideToUtf8(name.section) + "\"" + DidYouMean(NearestSection(name.section));
        return std::nullopt;
    }
    const SettingInfo* const setting = FindSetting(*group, name.key);
    if (setting == nullptr) {
        wrong = "[" + WideToUtf8(group->section) + "] has no key \"" + WideToUtf8(name.key) + "\"" +
                DidYouMean(NearestKey(*group, name.key));
        return std::nullopt;
    }
    return SettingAssignment{setting, std::wstring(text.substr(equals + 1))};
}

std::vector<SettingChange> CompareGroups(const ScanGroup& group, const ScanGroupValues& before,
                                         const ScanGroupValues& after) {
    std::vector<SettingChange> changes;
    for (const ScanRow& row : group.rows) {
        std::wstring old = ScanRowText(row, before);
        std::wstring text = ScanRowText(row, after);
        if (old != text) {
            changes.push_back({FindSetting(group, row.key), std::move(old), std::move(text)});
        }
    }
    return changes;
}

MergedChanges MergeChanges(std::span<const SettingAssignment> assignments, const std::wstring& uid) {
    MergedChanges merged;
    for (const ScanGroup& group : kScanGroups) {
        GroupChange change;
        change.group = &group;
        const auto isOfGroup = [&](const SettingAssignment& each) { return each.setting->group == &group; };
        if (std::ranges::none_of(assignments, isOfGroup)) {
            continue;
        }
        if (!GetStoredScanGroup(group, change.before, uid.c_str())) {
            merged.unreadable = &group;
            return merged;
        }
        change.after = change.before;
        for (const SettingAssignment& each : assignments) {
            std::string wrong =
                isOfGroup(each) ? SetSetting(*each.setting, each.value, !uid.empty(), change.after) : "";
            if (!wrong.empty()) {
                merged.faults.push_back({each.setting, std::move(wrong)});
            }
        }
        change.after.cleanFailedMoveDir = uid.empty() ? change.after.cleanFailedMoveDir : change.after.moveDir;
        change.changes = CompareGroups(group, change.before, change.after);
        if (!change.changes.empty()) {
            merged.groups.push_back(std::move(change));
        }
    }
    return merged;
}

bool StoreChange(const GroupChange& change, const std::wstring& uid) {
    const ScanWrite update{.value = change.after.flags, .mask = change.before.flags ^ change.after.flags};
    return uid.empty() ? SetScanGroupIni(*change.group, update, change.after, &change.before)
                       : SetScanGroupInDb(*change.group, uid.c_str(), update, change.after);
}

bool IsStored(const GroupChange& change, const std::wstring& uid) {
    ScanGroupValues now;
    ScanIniCache().clear();
    return GetStoredScanGroup(*change.group, now, uid.c_str()) &&
           std::ranges::all_of(change.changes, [&](const SettingChange& each) {
               return ScanRowText(*each.setting->row, now) == each.after;
           });
}

}  // namespace wrb
