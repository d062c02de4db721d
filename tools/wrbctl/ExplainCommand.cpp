#include "Console.h"
#include "ExitCode.h"
#include "HomeFolder.h"
#include "JsonText.h"
#include "ServerFiles.h"
#include "SettingTarget.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl explain 11111111-2222-3333-4444-555555555555 MSCfg.ScanBoot
  wrbctl explain 11111111-2222-3333-4444-555555555555 RTCfg
  wrbctl explain --server PSCfg
  wrbctl explain 11111111-2222-3333-4444-555555555555 --json

Exit codes: 0 done, 1 unknown agent or no settings, 2 wrong command line or name, 3 no back end runs.
)";

struct ExplainOptions {
    std::vector<std::string> arguments;
    bool server = false;
    bool json = false;
};

// Null for a key that is not in the catalogue.
const SettingInfo* InfoOf(const Explanation& line) {
    const ScanGroup* const group = FindScanSection(line.section);
    return group == nullptr ? nullptr : FindSetting(*group, line.key);
}

std::wstring WordText(const Explanation& line) {
    return line.word ? FormatWide(L"0x%08x & 0x%08x", *line.word, line.mask) : std::wstring();
}

void PrintTable(const std::vector<Explanation>& lines) {
    TextTable table({L"setting", L"value", L"source", L"from", L"word & mask", L"changed"});
    std::wstring section;
    for (const Explanation& line : lines) {
        if (line.section != section) {
            section = line.section;
            table.Add({L"[" + section + L"]"});
        }
        table.Add({line.key, CutTo(line.value, 40), Utf8ToWide(NameOf(line.source)), line.from, WordText(line),
                   line.isChanged ? L"yes" : L""});
    }
    PrintOut(table.Text(TerminalColumns()));
}

std::string ChangedText(const Explanation& line) {
    const std::string bit = WideToUtf8(FormatWide(L"0x%x", line.groupBit));
    return line.isChanged ? "yes: the agent has not fetched the section since it was changed (bit " + bit + ")"
                          : "no: the agent has fetched the section (bit " + bit + ")";
}

// The age of the file that the value is from, or that completes it.
std::string IniText() {
    const StatusItems inis = CheckInis(HomeFolder());
    return inis.front().text;
}

void PrintOne(const Explanation& line) {
    PrintOut(WideToUtf8(L"[" + line.section + L"] " + line.key + L" = " + VisibleText(line.value)) + "\n");
    TextTable table;
    const auto add = [&](const wchar_t* name, const std::string& text) {
        table.Add({std::wstring(L"  ") + name, Utf8ToWide(text)});
    };
    if (const SettingInfo* const info = InfoOf(line); info != nullptr) {
        add(L"meaning", std::string(info->help->label) + ": " + info->help->text);
        const std::string kind = NameOf(info->kind);
        add(L"kind", info->kind == SettingKind::Text ? kind : kind + ", " + info->Range());
        add(L"default", WideToUtf8(info->Default()));
    }
    add(L"source", NameOf(line.source) + (line.from.empty() ? std::string() : ": " + WideToUtf8(line.from)));
    if (line.word) {
        add(L"word & mask", WideToUtf8(WordText(line)));
    }
    if (line.groupBit != 0) {
        add(L"changed", ChangedText(line));
    }
    if (line.from.find(L"wrbscan.ini") != line.from.npos || line.source == SettingSource::Completed) {
        add(L"wrbscan.ini", IniText());
    }
    PrintOut(table.Text(std::nullopt));
}

Json::Value JsonOf(const Explanation& line) {
    Json::Value row;
    row["section"] = WideToUtf8(line.section);
    row["key"] = WideToUtf8(line.key);
    row["value"] = WideToUtf8(line.value);
    row["source"] = NameOf(line.source);
    row["from"] = WideToUtf8(line.from);
    if (line.word) {
        row["word"] = *line.word;
        row["mask"] = line.mask;
    }
    if (line.groupBit != 0) {
        row["groupBit"] = line.groupBit;
        row["changed"] = line.isChanged;
    }
    if (const SettingInfo* const info = InfoOf(line); info != nullptr) {
        row["kind"] = NameOf(info->kind);
        row["range"] = info->Range();
        row["default"] = WideToUtf8(info->Default());
        row["label"] = info->help->label;
        row["help"] = info->help->text;
    }
    return row;
}

int RunExplain(const ExplainOptions& options) {
    Selection selection;
    if (const int code = ReadSelection(options.arguments, options.server, "explain", selection); code != kExitOk) {
        return code;
    }
    const std::vector<Explanation>& lines = selection.lines;
    if (options.json) {
        Json::Value rows(Json::arrayValue);
        for (const Explanation& line : lines) {
            rows.append(JsonOf(line));
        }
        PrintJson(rows);
    } else {
        lines.size() == 1 ? PrintOne(lines.front()) : PrintTable(lines);
    }
    return kExitOk;
}

}  // namespace

void AddExplain(CLI::App& app, Run& run) {
    const auto options = std::make_shared<ExplainOptions>();
    CLI::App* const explain = AddSubcommand(app, "explain", "Show where each value that an agent gets comes from",
                                            kExamples, options, RunExplain, run);
    explain->add_option("arguments", options->arguments, "UID (without --server), then SECTION or SECTION.KEY");
    explain->add_flag("--server", options->server, "The server-wide defaults");
    explain->add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace wrb
