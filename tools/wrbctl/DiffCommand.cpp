#include <array>
#include <map>
#include <optional>
#include <set>

#include "Console.h"
#include "ExitCode.h"
#include "JsonText.h"
#include "SettingTarget.h"
#include "StringProtection.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl diff 11111111-2222-3333-4444-555555555555 66666666-7777-8888-9999-000000000000
  wrbctl diff 11111111-2222-3333-4444-555555555555 --server

With --server only sections are compared that have server-wide defaults. Protected texts differ in every answer
and are not compared.

Exit codes: 0 done, 1 unknown agent or no settings, 2 wrong command line, 3 no back end runs.
)";

struct DiffOptions {
    std::vector<std::string> uids;
    bool server = false;
    bool json = false;
};

using Name = std::pair<std::wstring, std::wstring>;  // section, key

// The values of both sides; nothing where a side has no such key.
struct Comparison {
    std::vector<Name> order;
    std::map<Name, std::array<std::optional<std::wstring>, 2>> values;
    std::array<std::set<std::wstring>, 2> sections;

    void Add(std::size_t side, const std::vector<Explanation>& lines) {
        for (const Explanation& line : lines) {
            if (line.source == SettingSource::Request || line.value.starts_with(kProtectedPrefix)) {
                continue;
            }
            const auto [place, isNew] = values.try_emplace({line.section, line.key});
            place->second[side] = line.value;
            sections[side].insert(line.section);
            if (isNew) {
                order.push_back(place->first);
            }
        }
    }

    bool Differs(const Name& name, bool inBothSections) const {
        const auto& pair = values.at(name);
        return pair[0] != pair[1] &&
               (!inBothSections || (sections[0].contains(name.first) && sections[1].contains(name.first)));
    }
};

int ReadSide(const std::wstring& uid, std::size_t side, Comparison& comparison) {
    Selection selection{.uid = uid, .name = {}, .lines = {}};
    const int code = ReadSelection(selection);
    comparison.Add(side, selection.lines);
    return code;
}

void Print(const Comparison& comparison, const DiffOptions& options) {
    const std::wstring right = options.server ? L"server" : Utf8ToWide(options.uids[1]);
    TextTable table({L"setting", Utf8ToWide(options.uids[0]), right});
    Json::Value rows(Json::arrayValue);
    for (const Name& name : comparison.order) {
        if (!comparison.Differs(name, options.server)) {
            continue;
        }
        const auto& pair = comparison.values.at(name);
        table.Add({name.first + L"." + name.second, pair[0].value_or(L"(none)"), pair[1].value_or(L"(none)")});
        Json::Value row;
        row["section"] = WideToUtf8(name.first);
        row["key"] = WideToUtf8(name.second);
        row["left"] = pair[0] ? Json::Value(WideToUtf8(*pair[0])) : Json::Value();
        row["right"] = pair[1] ? Json::Value(WideToUtf8(*pair[1])) : Json::Value();
        rows.append(std::move(row));
    }
    if (options.json) {
        PrintJson(rows);
    } else {
        PrintOut(table.IsEmpty() ? "no differences\n" : table.Text(TerminalColumns()));
    }
}

int RunDiff(const DiffOptions& options) {
    const std::size_t uids = options.server ? 1 : 2;
    if (!CheckCount(options.uids.size(), uids, uids, "diff UID UID, or diff UID --server")) {
        return kExitUsage;
    }
    Comparison comparison;
    for (std::size_t side = 0; side < 2; ++side) {
        const std::wstring uid = side < uids ? Utf8ToWide(options.uids[side]) : std::wstring();
        if (const int code = ReadSide(uid, side, comparison); code != kExitOk) {
            return code;
        }
    }
    Print(comparison, options);
    return kExitOk;
}

}  // namespace

void AddDiff(CLI::App& app, Run& run) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* const diff =
        AddSubcommand(app, "diff", "Show in which settings two agents, or an agent and the server, differ", kExamples,
                      options, RunDiff, run);
    diff->add_option("uids", options->uids, "One uid or two");
    diff->add_flag("--server", options->server, "Compare with the server-wide defaults");
    diff->add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace wrb
