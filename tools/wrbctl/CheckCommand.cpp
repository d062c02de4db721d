#include <algorithm>

#include "Console.h"
#include "ExitCode.h"
#include "HomeCheck.h"
#include "HomeFolder.h"
#include "JsonText.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl check
  wrbctl check --strict                     fail on warnings, too
  wrbctl check --home D:\staging\home --json

Checks wrbscan.ini, Private\wrbserver.ini, the protection key, the upload ticket and the alert texts in admin.

Exit codes: 0 no error (with --strict no finding), 1 findings, 2 wrong command line.
)";

struct CheckOptions {
    std::string home;
    bool strict = false;
    bool json = false;
};

Json::Value JsonOf(const IniFinding& finding) {
    Json::Value row;
    row["severity"] = finding.isError ? "error" : "warning";
    row["file"] = finding.file;
    row["line"] = finding.line;
    row["text"] = finding.text;
    return row;
}

void Print(const IniFinding& finding) {
    const std::string place = finding.file + (finding.line == 0 ? std::string() : ":" + std::to_string(finding.line));
    PrintOut(place + ": " +
             Coloured(finding.isError ? "error" : "warning", finding.isError ? Colour::Red : Colour::Yellow) + ": " +
             finding.text + "\n");
}

int RunCheck(const CheckOptions& options) {
    std::wstring home = options.home.empty() ? HomeFolder() : Utf8ToWide(options.home);
    home += home.empty() || home.back() == L'\\' || home.back() == L'/' ? L"" : L"\\";
    const std::vector<IniFinding> findings = CheckHomeFolder(home);
    Json::Value rows(Json::arrayValue);
    for (const IniFinding& finding : findings) {
        options.json ? static_cast<void>(rows.append(JsonOf(finding))) : Print(finding);
    }
    if (options.json) {
        PrintJson(rows);
    } else if (findings.empty()) {
        PrintOut("no findings in " + WideToUtf8(home) + "\n");
    }
    const bool fails = options.strict ? !findings.empty() : std::ranges::any_of(findings, &IniFinding::isError);
    return fails ? kExitFailed : kExitOk;
}

}  // namespace

void AddCheck(CLI::App& app, Run& run) {
    const auto options = std::make_shared<CheckOptions>();
    CLI::App* const check =
        AddSubcommand(app, "check", "Look for mistakes in the server's files", kExamples, options, RunCheck, run);
    check->add_option("--home", options->home, "Home folder (default: the server's)")->check(CLI::ExistingDirectory);
    check->add_flag("--strict", options->strict, "Fail on warnings, too");
    check->add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace wrb
