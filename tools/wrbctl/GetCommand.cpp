#include "Console.h"
#include "ExitCode.h"
#include "JsonText.h"
#include "SettingTarget.h"
#include "Subcommands.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl get 11111111-2222-3333-4444-555555555555
  wrbctl get 11111111-2222-3333-4444-555555555555 RTCfg
  wrbctl get 11111111-2222-3333-4444-555555555555 "Manual Scan Configuration.ScanBoot"
  wrbctl get --server MSCfg --json

Short names of the scan sections: MSCfg, RTCfg, PSCfg, SNCfg (manual, real time, prescheduled, scan now), each
also with the suffix Ex (exclusions) and the prefix Spy (spyware).

Exit codes: 0 done, 1 unknown agent or no settings, 2 wrong command line or name, 3 no back end runs.
)";

struct GetOptions {
    std::vector<std::string> arguments;
    bool server = false;
    bool json = false;
};

void PrintText(const std::vector<Explanation>& lines) {
    const std::wstring* section = nullptr;
    for (const Explanation& line : lines) {
        if (section == nullptr || *section != line.section) {
            PrintOut("[" + WideToUtf8(line.section) + "]\n");
        }
        section = &line.section;
        PrintOut(WideToUtf8(line.key + L"=" + VisibleText(line.value)) + "\n");
    }
}

void PrintObject(const std::vector<Explanation>& lines) {
    Json::Value sections(Json::objectValue);
    for (const Explanation& line : lines) {
        sections[WideToUtf8(line.section)][WideToUtf8(line.key)] = WideToUtf8(line.value);
    }
    PrintJson(sections);
}

int RunGet(const GetOptions& options) {
    Selection selection;
    if (const int code = ReadSelection(options.arguments, options.server, "get", selection); code != kExitOk) {
        return code;
    }
    const std::vector<Explanation>& lines = selection.lines;
    if (options.json) {
        PrintObject(lines);
    } else if (!selection.name.key.empty()) {
        PrintOut(WideToUtf8(lines.front().value) + "\n");
    } else {
        PrintText(lines);
    }
    return kExitOk;
}

}  // namespace

void AddGet(CLI::App& app, Run& run) {
    const auto options = std::make_shared<GetOptions>();
    CLI::App* const get = AddSubcommand(app, "get", "Show an agent's settings, or the server-wide defaults", kExamples,
                                        options, RunGet, run);
    get->add_option("arguments", options->arguments, "UID (without --server), then SECTION or SECTION.KEY");
    get->add_flag("--server", options->server, "The server-wide defaults");
    get->add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace wrb
