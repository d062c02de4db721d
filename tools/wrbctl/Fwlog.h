// The parts of "wrbctl fwlog": firewall log files from JSON lines, and back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Subcommands.h"

namespace wrb {

void AddFwlogWrite(CLI::App& fwlog, Run& run);
void AddFwlogRead(CLI::App& fwlog, Run& run);

struct FwlogWriteOptions {
    std::string out;
    std::optional<uint32_t> version;  // 0 or 1; without it the first record's, or 1
    std::string in = {};              // a file; empty: the standard input
    uint64_t* records = nullptr;      // gets their number
};
// Makes a firewall log file from JSON lines. No file is left when a line is wrong. Returns the program's exit code.
int RunFwlogWrite(const FwlogWriteOptions& options);

}  // namespace wrb
