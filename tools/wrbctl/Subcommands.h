// The subcommands of wrbctl. Each adds itself and its options to the command line, and sets `run` when it is asked for.
// It prints its result to the standard output and a failure to the standard error.
#pragma once

#include <functional>
#include <memory>

#include "CommandLine.h"

namespace wrb {

// Returns the program's exit code.
using Run = std::function<int()>;

void AddAudit(CLI::App& app, Run& run);
void AddCheck(CLI::App& app, Run& run);
void AddCommands(CLI::App& app, Run& run);
void AddCompletion(CLI::App& app, Run& run);
void AddCounters(CLI::App& app, Run& run);
void AddDecode(CLI::App& app, Run& run);
void AddDiagnostics(CLI::App& app, Run& run);
void AddDiff(CLI::App& app, Run& run);
void AddExplain(CLI::App& app, Run& run);
void AddFault(CLI::App& app, Run& run);
void AddFwlog(CLI::App& app, Run& run);
void AddGet(CLI::App& app, Run& run);
void AddLoad(CLI::App& app, Run& run);
void AddLogLevel(CLI::App& app, Run& run);
void AddMakeKey(CLI::App& app, Run& run);
void AddPack(CLI::App& app, Run& run);
void AddProtect(CLI::App& app, Run& run);
void AddRecord(CLI::App& app, Run& run);
void AddReplay(CLI::App& app, Run& run);
void AddSend(CLI::App& app, Run& run);
void AddSet(CLI::App& app, Run& run);
void AddStatus(CLI::App& app, Run& run);
void AddTail(CLI::App& app, Run& run);
void AddTrace(CLI::App& app, Run& run);
void AddUpload(CLI::App& app, Run& run);

// Adds a subcommand with its own examples. `options` lives as long as `run`.
template <typename Options>
CLI::App* AddSubcommand(CLI::App& app, const char* name, const char* description, const char* footer,
                        const std::shared_ptr<Options>& options, int (*function)(const Options& options), Run& run) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->footer(footer);
    command->callback([options, function, &run] { run = [options, function] { return function(*options); }; });
    return command;
}

// The option --timeout.
inline void AddTimeout(CLI::App& subcommand, double& seconds) {
    subcommand.add_option("--timeout", seconds, "Seconds to wait for the server")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
}

}  // namespace wrb
