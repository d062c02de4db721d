#include <string>

#include "CommandCatalog.h"
#include "Console.h"
#include "ExitCode.h"
#include "JsonText.h"
#include "Subcommands.h"
#include "Terminal.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl commands
  wrbctl commands --json

Exit codes: 0 done, 2 wrong command line.
)";
constexpr std::size_t kNameColumn = 42;

struct CommandsOptions {
    bool json = false;
};

std::string TextLine(std::size_t number, const CommandEntry& entry) {
    std::string line = std::to_string(number);
    line.insert(0, line.size() < 2 ? 1 : 0, ' ');
    line.append("  ").append(entry.name);
    line.append(line.size() < kNameColumn ? kNameColumn - line.size() : 1, ' ');
    line.append(entry.role);
    return line.append("; fields: ").append(entry.fields).append(entry.Answers() ? "" : "; no answer").append("\n");
}

Json::Value JsonRow(std::size_t number, const CommandEntry& entry) {
    Json::Value row;
    row["number"] = static_cast<Json::UInt>(number);
    row["name"] = std::string(entry.name);
    row["role"] = std::string(entry.role);
    row["fields"] = std::string(entry.fields);
    row["answers"] = entry.Answers();
    return row;
}

int RunCommands(const CommandsOptions& options) {
    Json::Value rows(Json::arrayValue);
    std::string text;
    std::size_t number = 0;
    for (const CommandEntry& entry : CommandCatalog()) {
        if (options.json) {
            rows.append(JsonRow(number, entry));
        } else {
            text += TextLine(number, entry);
        }
        ++number;
    }
    if (options.json) {
        PrintJson(rows);
    } else {
        PrintOut(WrapText(text, TerminalColumns()));
    }
    return kExitOk;
}

}  // namespace

void AddCommands(CLI::App& app, Run& run) {
    const auto options = std::make_shared<CommandsOptions>();
    CLI::App* const commands =
        AddSubcommand(app, "commands", "List the 72 commands", kExamples, options, RunCommands, run);
    commands->add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace wrb
