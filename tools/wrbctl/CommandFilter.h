// Which commands a subcommand is about.
#pragma once

#include <string>
#include <string_view>

#include "CommandLine.h"

namespace wrb {

struct CommandFilter {
    std::string command;  // parts, in letters of any case; an empty one admits all
    std::string uid;

    bool Admits(std::wstring_view name, std::wstring_view agent) const;
};

// The options --command and --uid.
void AddFilter(CLI::App& app, CommandFilter& filter);

}  // namespace wrb
