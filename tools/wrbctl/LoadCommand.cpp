#include <windows.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "AgentLoad.h"
#include "Console.h"
#include "Conversation.h"
#include "Failure.h"
#include "JsonText.h"
#include "RunningProgram.h"
#include "ServerStopEvent.h"
#include "SettingTarget.h"
#include "StopEvent.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl load                                   100 agents for ten seconds, as fast as they are answered
  wrbctl load --agents 1000 --rate 50 --for 60  1000 agents that send 50 commands a second
  wrbctl load --mix night.txt --json

The agents are those of the store, in turn. Without --mix they ask what agents of a quiet day ask; nothing of it changes
the server. A line of a mix file is WEIGHT COMMAND [FIELD...]; the field UID stands for the agent:
  60 CMDHL_IS_CONFIGFLAGSET UID 4294967295
  12 CMDHL_GET_ALL_SCAN_CFG UID

Exit codes: 0 done, 1 commands failed, 2 wrong command line or mix, 3 a service does not run.
)";

constexpr DWORD kPollMilliseconds = 100;

struct LoadOptions {
    unsigned agents = 100;
    double rate = 0;
    double seconds = 10;
    std::string mix;
    bool json = false;
};

// What a program of the server takes.
struct ProgramUse {
    const char* name;
    const wchar_t* stopEvent;
    std::optional<RunningProgram> before{};
    std::optional<RunningProgram> after{};
};

LoadMix ReadMix(const std::string& path) {
    if (path.empty()) {
        return DefaultLoadMix();
    }
    std::ifstream file(Utf8ToWide(path).c_str(), std::ios::binary);
    return ParseLoadMix(std::string(std::istreambuf_iterator<char>(file), {}));
}

double Milliseconds(uint64_t microseconds) {
    return static_cast<double>(microseconds) / 1000;
}

std::wstring Number(uint64_t number) {
    return FormatWide(L"%10llu", static_cast<unsigned long long>(number));
}

constexpr struct {
    const wchar_t* head;
    const char* key;
    double part;
} kPercentiles[] = {{L"    p50 ms", "p50Ms", 0.5},
                    {L"    p90 ms", "p90Ms", 0.9},
                    {L"    p99 ms", "p99Ms", 0.99},
                    {L"  p99.9 ms", "p999Ms", 0.999}};

std::string TableOf(const AgentLoad& load) {
    std::vector<std::wstring> heads = {L"command", L"  commands", L"    errors", L"     empty"};
    for (const auto& percentile : kPercentiles) {
        heads.emplace_back(percentile.head);
    }
    heads.emplace_back(L"    max ms");
    TextTable table(heads);
    for (std::size_t i = 0; i < load.Mix().size(); ++i) {
        const LoadTally& tally = load.Tally(i);
        std::vector<std::wstring> cells = {load.Mix()[i].command, Number(tally.latencies.Count()),
                                           Number(tally.undelivered + tally.unanswered), Number(tally.empty)};
        for (const auto& percentile : kPercentiles) {
            cells.push_back(FormatWide(L"%10.1f", Milliseconds(tally.latencies.Percentile(percentile.part))));
        }
        cells.push_back(FormatWide(L"%10.1f", Milliseconds(tally.latencies.Slowest())));
        table.Add(std::move(cells));
    }
    return table.Text(TerminalColumns());
}

std::string MemoryText(const ProgramUse& use) {
    if (!use.before || !use.after) {
        return std::string(use.name) + ": not known; it has not run all the time, or under another account\n";
    }
    const auto text = [](uint64_t before, uint64_t after) {
        return std::to_string(before) + " -> " + std::to_string(after);
    };
    return std::string(use.name) + ": private memory " + text(use.before->bytes >> 10, use.after->bytes >> 10) +
           " KiB" + (use.after->handles == 0 ? "" : ", handles " + text(use.before->handles, use.after->handles)) +
           "\n";
}

Json::Value RowsOf(const AgentLoad& load) {
    Json::Value rows(Json::arrayValue);
    for (std::size_t i = 0; i < load.Mix().size(); ++i) {
        const LoadTally& tally = load.Tally(i);
        Json::Value& row = rows.append(Json::objectValue);
        row["command"] = WideToUtf8(load.Mix()[i].command);
        row["commands"] = static_cast<Json::UInt64>(tally.latencies.Count());
        row["undelivered"] = static_cast<Json::UInt64>(tally.undelivered);
        row["unanswered"] = static_cast<Json::UInt64>(tally.unanswered);
        row["empty"] = static_cast<Json::UInt64>(tally.empty);
        for (const auto& percentile : kPercentiles) {
            row[percentile.key] = Milliseconds(tally.latencies.Percentile(percentile.part));
        }
        row["maximumMs"] = Milliseconds(tally.latencies.Slowest());
    }
    return rows;
}

struct Outcome {
    std::size_t agents;
    double seconds;
    std::vector<ProgramUse> uses;
};

void PrintText(const AgentLoad& load, const Outcome& outcome) {
    const auto commands = static_cast<double>(load.Commands());
    char line[200];
    std::snprintf(line, sizeof line, "%.0f commands of %zu agents in %.1f s: %.1f a second, %llu errors\n", commands,
                  outcome.agents, outcome.seconds, commands / outcome.seconds,
                  static_cast<unsigned long long>(load.Errors()));
    std::string text = TableOf(load) + line;
    for (const ProgramUse& use : outcome.uses) {
        text += MemoryText(use);
    }
    PrintOut(text);
}

void PrintResult(const AgentLoad& load, const Outcome& outcome) {
    Json::Value result;
    result["agents"] = static_cast<Json::UInt64>(outcome.agents);
    result["seconds"] = outcome.seconds;
    result["commandsPerSecond"] = static_cast<double>(load.Commands()) / outcome.seconds;
    result["errors"] = static_cast<Json::UInt64>(load.Errors());
    result["commands"] = RowsOf(load);
    for (const ProgramUse& use : outcome.uses) {
        if (use.before && use.after) {
            Json::Value& row = result["programs"][use.name];
            row["bytesBefore"] = static_cast<Json::UInt64>(use.before->bytes);
            row["bytesAfter"] = static_cast<Json::UInt64>(use.after->bytes);
        }
    }
    PrintJson(result);
}

void ShowProgress(const AgentLoad& load, double seconds) {
    StatusLine line;
    const auto start = std::chrono::steady_clock::now();
    for (uint64_t shown = 0; !load.IsOver(); Sleep(kPollMilliseconds)) {
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (const auto second = static_cast<uint64_t>(elapsed.count()); second != shown) {
            shown = second;
            const auto rate = static_cast<uint64_t>(static_cast<double>(load.Commands()) / elapsed.count());
            line.Show(std::to_string(second) + " of " + std::to_string(static_cast<uint64_t>(seconds)) +
                      " s: " + std::to_string(load.Commands()) + " commands, " + std::to_string(rate) + " a second, " +
                      std::to_string(load.Errors()) + " errors");
        }
    }
}

// 0, or the exit code of a failure that has been reported.
int FindAgents(unsigned most, std::vector<std::wstring>& uids) {
    CommandTally ignored;
    if (!Ask(ignored, L"CMDHL_ECHO", {L"load"}).answered) {
        return Fail(kExitServiceNotRunning, "the host does not answer; start wrbhost");
    }
    if (const int code = CheckDatabaseServes(); code != kExitOk) {
        return code;
    }
    if (!ListAgents(uids, most)) {
        return kExitFailed;
    }
    if (!uids.empty() && uids.size() < most) {
        PrintErr("wrbctl: the database has only " + std::to_string(uids.size()) + " agents; they send every command\n");
    }
    return uids.empty() ? Fail(kExitFailed, "the database has no agents") : kExitOk;
}

int RunLoad(const LoadOptions& options) {
    LoadPlan plan{.agents = {}, .mix = {}, .seconds = options.seconds, .perSecond = options.rate};
    try {
        plan.mix = ReadMix(options.mix);
    } catch (const std::invalid_argument& error) {
        return Fail(kExitUsage, options.mix + ": " + error.what());
    }
    if (const int code = FindAgents(options.agents, plan.agents); code != kExitOk) {
        return code;
    }
    Outcome outcome{plan.agents.size(), 0, {{"host", kServerStopEvent}, {"back end", kBackEndStopEvent}}};
    for (ProgramUse& use : outcome.uses) {
        use.before = FindRunningProgram(use.stopEvent);
    }
    const auto start = std::chrono::steady_clock::now();
    AgentLoad load(std::move(plan));
    ShowProgress(load, options.seconds);
    load.Wait();
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (ProgramUse& use : outcome.uses) {
        use.after = FindRunningProgram(use.stopEvent);
    }
    options.json ? PrintResult(load, outcome) : PrintText(load, outcome);
    return load.Errors() == 0 ? kExitOk : kExitFailed;
}

}  // namespace

void AddLoad(CLI::App& app, Run& run) {
    const auto options = std::make_shared<LoadOptions>();
    CLI::App* const load = AddSubcommand(app, "load", "Simulate agents and show how fast they are answered", kExamples,
                                         options, RunLoad, run);
    load->add_option("--agents", options->agents, "Agents, at most those of the store; 200 ask at the same time")
        ->check(CLI::Range(1u, 1'000'000u))
        ->capture_default_str();
    load->add_option("--rate", options->rate, "Commands a second of all agents (default: as fast as they are answered)")
        ->check(CLI::Range(0.01, 100'000.0));
    load->add_option("--for", options->seconds, "Seconds")->check(CLI::Range(0.1, 604'800.0))->capture_default_str();
    load->add_option("--mix", options->mix, "File with the commands and their weights")->check(CLI::ExistingFile);
    load->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
