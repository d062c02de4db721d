#include "SetPlan.h"

#include <utility>

#include "Failure.h"
#include "JsonText.h"
#include "SettingTarget.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

int ReportFaults(const MergedChanges& merged) {
    for (const SettingFault& fault : merged.faults) {
        Fail(kExitUsage, WideToUtf8(fault.setting->Name()) + " " + fault.wrong);
    }
    return kExitUsage;
}

}  // namespace

int ReadSetPlan(SetPlan& plan) {
    Progress progress("reading agents", plan.uids.size());
    for (const std::wstring& uid : plan.uids) {
        const MergedChanges merged = MergeChanges(plan.assignments, uid);
        if (!merged.faults.empty()) {
            return ReportFaults(merged);
        }
        if (merged.unreadable != nullptr) {
            if (plan.uids.size() == 1) {
                return FailUnreadable(uid, {std::wstring(merged.unreadable->section)});
            }
            ++plan.unreadable;
        } else if (!merged.groups.empty()) {
            plan.changed.push_back(uid);
        }
        for (const GroupChange& group : merged.groups) {
            for (const SettingChange& change : group.changes) {
                ++plan.summary[{change.setting, change.before, change.after}];
            }
        }
        progress.Step();
    }
    return kExitOk;
}

void PrintSetPlan(const SetPlan& plan, bool all) {
    TextTable table(all ? std::vector<std::wstring>{L"setting", L"old", L"new", L"agents"}
                        : std::vector<std::wstring>{L"setting", L"old", L"new"});
    for (const auto& [change, agents] : plan.summary) {
        const auto& [setting, before, after] = change;
        std::vector<std::wstring> cells{setting->Name(), CutTo(before, 40), CutTo(after, 40)};
        if (all) {
            cells.push_back(std::to_wstring(agents));
        }
        table.Add(std::move(cells));
    }
    PrintOut(table.Text(TerminalColumns()));
    if (plan.unreadable != 0) {
        PrintOut(std::to_string(plan.unreadable) + (plan.unreadable == 1 ? " agent has" : " agents have") +
                 " no settings of the group: nothing changes there\n");
    }
}

void PrintSetPlanAsJson(const SetPlan& plan, bool written) {
    Json::Value result;
    Json::Value& changes = result["changes"] = Json::Value(Json::arrayValue);
    for (const auto& [change, agents] : plan.summary) {
        const auto& [setting, before, after] = change;
        Json::Value row;
        row["section"] = WideToUtf8(setting->Section());
        row["key"] = WideToUtf8(setting->Key());
        row["old"] = WideToUtf8(before);
        row["new"] = WideToUtf8(after);
        row["targets"] = static_cast<Json::UInt64>(agents);
        changes.append(std::move(row));
    }
    result["unreadable"] = static_cast<Json::UInt64>(plan.unreadable);
    result["written"] = written;
    PrintJson(result);
}

}  // namespace wrb
