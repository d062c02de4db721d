#include <windows.h>

#include <algorithm>
#include <iostream>

#include "Console.h"
#include "Conversation.h"
#include "DbListing.h"
#include "Failure.h"
#include "Polling.h"
#include "SetPlan.h"
#include "SettingTarget.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl set 11111111-2222-3333-4444-555555555555 MSCfg.ScanBoot=0 MSCfg.CompressedLayer=3
  wrbctl set 11111111-2222-3333-4444-555555555555 "RTCfg.MoveDir=C:\Quarantine" --dry-run
  wrbctl set --server PSCfg.Hour=3 PSCfg.Minute=30 --yes
  wrbctl set --all SpyMSCfg.ScanType=1

Only the given keys change; 'wrbctl get' shows their names. --all changes every agent, one by one.

Exit codes: 0 done, 1 failed or not confirmed, 2 wrong command line, key or value, 3 no back end runs, 4 sent, but
not stored in time.
)";

constexpr uint64_t kStoreMilliseconds = 10'000;
constexpr DWORD kPollMilliseconds = 10;

struct SetOptions {
    std::vector<std::string> arguments;
    bool server = false;
    bool all = false;
    bool dryRun = false;
    bool yes = false;
    bool json = false;
};

// 0, or the exit code of faults that have been reported.
int ParseAssignments(const SetOptions& options, SetPlan& plan) {
    int code = kExitOk;
    for (std::size_t i = options.server || options.all ? 0 : 1; i < options.arguments.size(); ++i) {
        std::string wrong;
        const auto assignment = ParseAssignment(Utf8ToWide(options.arguments[i]), wrong);
        if (!assignment) {
            code = Fail(kExitUsage, wrong);
        } else if (std::ranges::count(plan.assignments, assignment->setting, &SettingAssignment::setting) != 0) {
            code = Fail(kExitUsage, "\"" + options.arguments[i] + "\": the setting is given twice");
        } else {
            plan.assignments.push_back(*assignment);
        }
    }
    return code;
}

int FindTargets(const SetOptions& options, SetPlan& plan) {
    BindIniCaches();
    if (!options.all) {
        plan.uids.push_back(options.server ? std::wstring() : Utf8ToWide(options.arguments[0]));
        return CheckTarget(plan.uids.front());
    }
    if (const int code = CheckDatabaseServes(); code != kExitOk) {
        return code;
    }
    if (!ListAgents(plan.uids)) {
        return kExitFailed;
    }
    return plan.uids.empty() ? Fail(kExitFailed, "the database has no agents") : kExitOk;
}

bool IsConfirmed(const SetPlan& plan, const SetOptions& options) {
    if (options.yes) {
        return true;
    }
    const std::string target = options.server ? "the server-wide defaults"
                               : options.all  ? std::to_string(plan.changed.size()) + " agents"
                                              : "the agent " + options.arguments[0];
    PrintErr("Write this to " + target + "? [y/N] ");
    std::string answer;
    std::getline(std::cin, answer);
    return answer.starts_with('y') || answer.starts_with('Y');
}

std::wstring AccountName() {
    wchar_t name[257];
    auto capacity = static_cast<DWORD>(std::size(name));
    return GetUserNameW(name, &capacity) ? name : L"";
}

// Who changed what. Without a database server there is no trail.
void WriteAudit(const GroupChange& group, const std::wstring& uid) {
    static const std::wstring user = AccountName();
    for (const SettingChange& change : group.changes) {
        WriteDbAudit({user, uid.empty() ? L"server" : uid, change.setting->Name(), change.before, change.after});
    }
}

int Write(const SetPlan& plan) {
    Progress progress("writing agents", plan.changed.size());
    for (const std::wstring& uid : plan.changed) {
        const std::string target = uid.empty() ? "the server-wide defaults" : WideToUtf8(uid);
        for (const GroupChange& group : MergeChanges(plan.assignments, uid).groups) {
            if (!StoreChange(group, uid)) {
                return Fail(kExitFailed, "cannot write to " + target + "; the debug log says why");
            }
            if (!PollUntil([&] { return IsStored(group, uid); }, kStoreMilliseconds, kPollMilliseconds)) {
                return Fail(kExitTimedOut, target + " still has the old values of [" +
                                               WideToUtf8(group.group->section) + "] after 10 s");
            }
            WriteAudit(group, uid);
        }
        progress.Step();
    }
    return kExitOk;
}

// The host's cache would give the old values for up to six seconds.
void TellHost() {
    CommandTally tally;
    Tell(tally, L"CMDHL_CLEAR_INI_CACHE", {});
}

int WriteConfirmed(const SetPlan& plan, const SetOptions& options) {
    if (!IsConfirmed(plan, options)) {
        return Fail(kExitFailed, "nothing is written");
    }
    const int code = Write(plan);
    if (options.server) {
        TellHost();
    }
    if (options.json) {
        PrintSetPlanAsJson(plan, code == kExitOk);
    } else if (code == kExitOk) {
        PrintOut(options.server
                     ? "stored and read back; agents with settings of their own keep them, --all changes those\n"
                     : "stored and read back\n");
    }
    return code;
}

int RunSet(const SetOptions& options) {
    const bool noUid = options.server || options.all;
    if ((options.server && options.all) ||
        !CheckCount(options.arguments.size(), noUid ? 1 : 2, SIZE_MAX, "set UID|--server|--all SECTION.KEY=VALUE...")) {
        return options.server && options.all ? Fail(kExitUsage, "take one of --server and --all") : kExitUsage;
    }
    SetPlan plan;
    int code = ParseAssignments(options, plan);
    code = code == kExitOk ? FindTargets(options, plan) : code;
    code = code == kExitOk ? ReadSetPlan(plan) : code;
    if (code != kExitOk) {
        return code;
    }
    if (!options.json) {
        PrintSetPlan(plan, options.all);
    }
    if (plan.changed.empty() || options.dryRun) {
        options.json ? PrintSetPlanAsJson(plan, false)
                     : PrintOut(plan.changed.empty() ? "nothing to change\n" : "dry run: nothing is written\n");
        return kExitOk;
    }
    return WriteConfirmed(plan, options);
}

}  // namespace

void AddSet(CLI::App& app, Run& run) {
    const auto options = std::make_shared<SetOptions>();
    CLI::App* const set = AddSubcommand(app, "set", "Change settings of an agent, of all agents or of the server",
                                        kExamples, options, RunSet, run);
    set->add_option("arguments", options->arguments, "UID (without --server and --all), then SECTION.KEY=VALUE...");
    set->add_flag("--server", options->server, "The server-wide defaults in wrbscan.ini");
    set->add_flag("--all", options->all, "Every agent");
    set->add_flag("--dry-run", options->dryRun, "Show what would change, and write nothing");
    set->add_flag("--yes", options->yes, "Do not ask");
    set->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
