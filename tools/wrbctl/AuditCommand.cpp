#include "CalendarTime.h"
#include "Console.h"
#include "DbListing.h"
#include "Failure.h"
#include "JsonText.h"
#include "SettingTarget.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Examples:
  wrbctl audit                               the latest changes, and who made them
  wrbctl audit 3f2a6c10 --limit 5            the latest five of one agent
  wrbctl audit ScanBoot --json               all rows that name a setting

Exit codes: 0 done, 1 the database does not list its audit, 2 wrong command line, 3 no back end runs.
)";

struct AuditOptions {
    std::string text;
    uint32_t limit = 50;
    bool json = false;
};

enum AuditColumn : std::size_t { Id, ChangedAt, User, Target, Setting, OldValue, NewValue };

constexpr struct {
    const char* key;  // in JSON
    const wchar_t* head;
    AuditColumn column;
} kColumns[] = {{"user", L"user", User},
                {"target", L"changed", Target},
                {"setting", L"setting", Setting},
                {"old", L"old", OldValue},
                {"new", L"new", NewValue}};

void PrintRows(const DbListing& audit) {
    std::vector<std::wstring> heads{L"time"};
    for (const auto& column : kColumns) {
        heads.emplace_back(column.head);
    }
    TextTable table(std::move(heads));
    for (std::size_t row = audit.Rows(); row-- != 0;) {
        std::vector<std::wstring> cells{LocalTimeText(ParseInt64(audit.Cell(row, ChangedAt)))};
        for (const auto& column : kColumns) {
            cells.push_back(CutTo(audit.Cell(row, column.column), 60));
        }
        table.Add(std::move(cells));
    }
    PrintOut(table.Text(TerminalColumns()) + std::to_string(audit.Rows()) + " of " + std::to_string(audit.total) +
             " changes\n");
}

void PrintRowsAsJson(const DbListing& audit) {
    Json::Value rows(Json::arrayValue);
    for (std::size_t row = audit.Rows(); row-- != 0;) {
        Json::Value& object = rows.append(Json::objectValue);
        object["time"] = static_cast<Json::Int64>(ParseInt64(audit.Cell(row, ChangedAt)));
        for (const auto& column : kColumns) {
            object[column.key] = WideToUtf8(audit.Cell(row, column.column));
        }
    }
    PrintJson(rows);
}

int RunAudit(const AuditOptions& options) {
    if (const int code = CheckDatabaseServes(); code != kExitOk) {
        return code;
    }
    DbListing audit;
    if (!ReadDbListing({.table = L"audit", .search = Utf8ToWide(options.text), .rows = options.limit}, audit)) {
        return Fail(kExitFailed, "the database does not list its audit; the debug log says why");
    }
    (options.json ? PrintRowsAsJson : PrintRows)(audit);
    return kExitOk;
}

}  // namespace

void AddAudit(CLI::App& app, Run& run) {
    const auto options = std::make_shared<AuditOptions>();
    CLI::App* const audit = AddSubcommand(app, "audit", "Show who changed which settings, the latest last", kExamples,
                                          options, RunAudit, run);
    audit->add_option("text", options->text, "Only rows with this text: an agent, a setting, a user or a value");
    audit->add_option("--limit", options->limit, "Latest rows that are shown")
        ->check(CLI::Range(uint32_t{1}, kMostListedRows))
        ->capture_default_str();
    audit->add_flag("--json", options->json, "Print a JSON array");
}

}  // namespace wrb
