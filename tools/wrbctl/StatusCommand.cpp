#include "Console.h"
#include "ExitCode.h"
#include "JsonText.h"
#include "ServerStatus.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl status
  wrbctl status --json
  wrbctl status > nul && echo the server serves

Exit codes: 0 everything that serves does, 2 wrong command line, 3 something does not.
)";

struct StatusOptions {
    bool json = false;
};

void PrintTable(const StatusItems& items) {
    TextTable table;
    for (const StatusItem& item : items) {
        table.Add({Utf8ToWide(NameOf(item.health)), Utf8ToWide(item.name), Utf8ToWide(item.text)});
    }
    const std::string text = table.Text(TerminalColumns());
    std::string coloured;
    auto item = items.begin();
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at) + 1;
        std::string line = text.substr(at, end - at);
        if (line.front() != ' ') {  // else an item goes on
            constexpr Colour kColours[] = {Colour::Green, Colour::Yellow, Colour::Red};
            const std::string word = NameOf(item->health);
            line.replace(0, word.size(), Coloured(word, kColours[static_cast<std::size_t>(item->health)]));
            ++item;
        }
        coloured += line;
        at = end;
    }
    PrintOut(coloured);
}

int RunStatus(const StatusOptions& options) {
    const StatusItems items = ReadServerStatus();
    options.json ? PrintJson(StatusJson(items)) : PrintTable(items);
    return WorstOf(items) == Health::Down ? kExitServiceNotRunning : kExitOk;
}

}  // namespace

void AddStatus(CLI::App& app, Run& run) {
    const auto options = std::make_shared<StatusOptions>();
    CLI::App* const status =
        AddSubcommand(app, "status", "Show how each part of the server is", kExamples, options, RunStatus, run);
    status->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
