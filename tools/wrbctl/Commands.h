// The subcommands of wrbctl. Each prints its result to the standard output, a failure to the standard error, and
// returns the program's exit code.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace wrb {

struct SendOptions {
    std::string command;
    std::vector<std::string> fields;  // behind the reply pipe, which wrbctl adds itself
    double timeoutSeconds = 10;       // from the start to the last byte of the answer
    bool json = false;
};

int RunSend(const SendOptions& options);

int RunCommands(bool json);

struct CountersOptions {
    bool all = false;     // also the commands that were never called
    double interval = 0;  // seconds between two looks; 0 looks once
    unsigned times = 0;   // how many looks with an interval; 0 goes on until Ctrl-C
    bool json = false;
};

int RunCounters(const CountersOptions& options);

// Without a level: shows the filter. With one: has the log service change it.
int RunLogLevel(const std::optional<std::string>& level, double timeoutSeconds, bool json);

}  // namespace wrb
