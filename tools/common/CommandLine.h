// The command line as UTF-8, with any system code page, and CLI11 with the project's exit codes.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace wrb {

// The program and its arguments, as the system splits a command line. Empty when there is no memory.
std::vector<std::wstring> SplitCommandLine(const wchar_t* line);

// The arguments of this process without the program's name, exactly as they were quoted: no wildcard is expanded.
std::vector<std::string> Utf8Arguments();

// The argument as part of a command line that splits into the same text: quotes round it where they are needed.
std::wstring QuotedArgument(const std::wstring& argument);

// Parses `arguments` (in their order). No value: continue. Otherwise the exit code to end with: help and version print
// to the standard output and give kExitOk, a wrong command line prints to the standard error and gives kExitUsage.
std::optional<int> ParseArguments(CLI::App& app, std::vector<std::string> arguments);

}  // namespace wrb
