// What "wrbctl set" would change, before it is written.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "ScanChanges.h"
#include "SettingCatalog.h"

namespace wrb {

struct SetPlan {
    std::vector<SettingAssignment> assignments;
    std::vector<std::wstring> uids;     // an empty one: the server
    std::vector<std::wstring> changed;  // those of them that change
    std::size_t unreadable = 0;         // agents without settings of the group

    // How many targets change a setting from one value to another.
    std::map<std::tuple<const SettingInfo*, std::wstring, std::wstring>, std::size_t> summary;
};

// Reads every target and sums up what would change. 0, or the exit code of a failure that has been reported.
int ReadSetPlan(SetPlan& plan);

// A table for people; `all` adds the number of agents to each row.
void PrintSetPlan(const SetPlan& plan, bool all);

void PrintSetPlanAsJson(const SetPlan& plan, bool written);

}  // namespace wrb
