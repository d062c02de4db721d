// Subcommands that bring their own options: each adds itself to the command line, and sets `run` when it is asked for.
#pragma once

#include <functional>
#include <memory>

#include "CommandLine.h"

namespace wrb {

// Returns the program's exit code.
using Run = std::function<int()>;

void AddStatus(CLI::App& app, Run& run);
void AddGet(CLI::App& app, Run& run);
void AddExplain(CLI::App& app, Run& run);
void AddSet(CLI::App& app, Run& run);
void AddAudit(CLI::App& app, Run& run);
void AddDiff(CLI::App& app, Run& run);
void AddCheck(CLI::App& app, Run& run);
void AddDiagnostics(CLI::App& app, Run& run);
void AddUpload(CLI::App& app, Run& run);
void AddCompletion(CLI::App& app, Run& run);
void AddFault(CLI::App& app, Run& run);
void AddTail(CLI::App& app, Run& run);
void AddTrace(CLI::App& app, Run& run);
void AddLoad(CLI::App& app, Run& run);
void AddRecord(CLI::App& app, Run& run);
void AddReplay(CLI::App& app, Run& run);
void AddDecode(CLI::App& app, Run& run);

// Adds a subcommand with its own examples. `options` lives as long as `run`.
template <typename Options>
CLI::App* AddSubcommand(CLI::App& app, const char* name, const char* description, const char* footer,
                        const std::shared_ptr<Options>& options, int (*function)(const Options& options), Run& run) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->footer(footer);
    command->callback([options, function, &run] { run = [options, function] { return function(*options); }; });
    return command;
}

}  // namespace wrb
