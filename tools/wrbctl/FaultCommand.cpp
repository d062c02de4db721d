#include <windows.h>

#include <stdexcept>

#include "Console.h"
#include "ExitCode.h"
#include "Failure.h"
#include "FaultBoard.h"
#include "JsonText.h"
#include "Subcommands.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl fault                                       the faults that are switched on
  wrbctl fault DB_GET_MSCF:delay=2s:every=10         each tenth answer comes two seconds late
  wrbctl fault "*:silence" DB_GET_IP:truncate        half an answer to one command, none to the others
  wrbctl fault --clear                               all off

A rule is COMMAND:KIND[=TIME][:every=N]. COMMAND is a command of the database server, or *. KIND is delay=TIME, close (an
answer without a byte), garbage, truncate or silence. A write can be delayed and silenced.

Exit codes: 0 done, 1 failed, 2 wrong command line, 3 the back end does not run, or not with --allow-faults.
)";

struct FaultOptions {
    std::vector<std::string> rules;
    bool clear = false;
    bool json = false;
};

void Print(const FaultBoard& board, bool json) {
    const std::vector<FaultBoard::Entry> entries = board.Entries();
    Json::Value faults(Json::arrayValue);
    std::string text = entries.empty() ? "faults are allowed, none is switched on\n" : "";
    for (const FaultBoard::Entry& entry : entries) {
        Json::Value& fault = faults.append(Json::objectValue);
        fault["rule"] = FaultText(entry.rule);
        fault["applied"] = entry.applied;
        text += "FAULT " + FaultText(entry.rule) + ", applied " + std::to_string(entry.applied) + " times\n";
    }
    json ? PrintJson(faults) : PrintOut(text);
}

int RunFault(const FaultOptions& options) {
    std::vector<FaultRule> rules;
    try {
        for (const std::string& text : options.rules) {
            rules.push_back(ParseFaultRule(text));
        }
    } catch (const std::invalid_argument& error) {
        return Fail(kExitUsage, error.what());
    }
    SharedFaultBoard board;
    if (!board.Open(kFaultBoard)) {
        return FailToOpen("the back end does not run, or was started without --allow-faults",
                          "cannot open the section of the faults", GetLastError());
    }
    if (options.clear) {
        board->Clear();
    }
    for (const FaultRule& rule : rules) {
        if (!board->Set(rule)) {
            return Fail(kExitFailed, "too many faults");
        }
    }
    Print(*board, options.json);
    return kExitOk;
}

}  // namespace

void AddFault(CLI::App& app, Run& run) {
    const auto options = std::make_shared<FaultOptions>();
    CLI::App* const fault = AddSubcommand(app, "fault", "Show and switch faults of the database server, for tests",
                                          kExamples, options, RunFault, run);
    fault->add_option("rules", options->rules, "Faults to switch on; a command has one");
    fault->add_flag("--clear", options->clear, "Switch all off first");
    fault->add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace wrb
