#include <windows.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "BundleTables.h"
#include "Commands.h"
#include "Console.h"
#include "Dialect.h"
#include "ExitCode.h"
#include "JsonText.h"
#include "SeedStore.h"
#include "SqlAddress.h"
#include "Store.h"
#include "StoreSchema.h"
#include "Text.h"
#include "TextSearch.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr struct {
    const char* column;  // and key in JSON
    std::size_t width;
} kAgentColumns[] = {
    {"uid", 36}, {"computer", 20}, {"ip", 15}, {"domain_name", 16}, {"program_version", 0},
};

using AgentRow = std::vector<std::wstring>;  // by kAgentColumns

// Of these tables a row without its agent is an orphan.
std::vector<std::string> TablesOfAgents() {
    std::vector<std::string> tables{"scan", "spyware_approved", "restore_session", "behaviour_policy", "special_log"};
    for (const BundleTable& bundle : BundleTables()) {
        tables.emplace_back(bundle.name);
    }
    return tables;
}

std::vector<AgentRow> FindAgents(SqlDb& db, const std::wstring& filter) {
    std::string columns;
    for (const auto& column : kAgentColumns) {
        columns += (columns.empty() ? "" : ", ") + std::string(column.column);
    }
    std::vector<AgentRow> agents;
    for (SqlStatement read = db.Use("SELECT " + columns + " FROM agent ORDER BY uid"); read.Step();) {
        AgentRow row;
        for (int i = 0; i < read.Columns(); ++i) {
            row.push_back(read.Text(i));
        }
        if (std::ranges::any_of(row, [&](const std::wstring& text) { return ContainsIgnoringCase(text, filter); })) {
            agents.push_back(std::move(row));
        }
    }
    return agents;
}

void PrintAgents(const std::vector<AgentRow>& agents) {
    for (const AgentRow& agent : agents) {
        std::wstring line;
        for (std::size_t i = 0; i < agent.size(); ++i) {
            const std::wstring text = VisibleText(agent[i]);
            line +=
                text + std::wstring(kAgentColumns[i].width - std::min(kAgentColumns[i].width, text.size()) + 2, L' ');
        }
        line.resize(line.find_last_not_of(L' ') + 1);
        PrintOut(WideToUtf8(line) + "\n");
    }
}

void PrintAgentsAsJson(const std::vector<AgentRow>& agents) {
    Json::Value list(Json::arrayValue);
    for (const AgentRow& agent : agents) {
        Json::Value& object = list.append(Json::objectValue);
        for (std::size_t i = 0; i < agent.size(); ++i) {
            object[kAgentColumns[i].column] = WideToUtf8(agent[i]);
        }
    }
    PrintJson(list);
}

}  // namespace

int ShowAgents(const std::string& store, const std::string& filter, bool json) {
    const std::vector<AgentRow> agents = FindAgents(*OpenStore(Utf8ToWide(store)), Utf8ToWide(filter));
    (json ? PrintAgentsAsJson : PrintAgents)(agents);
    if (agents.empty()) {
        PrintErr("wrbback: no agent\n");
    }
    return kExitOk;
}

int Export(const std::string& store) {
    PrintOut(WriteSeed(ReadSeed(*OpenStore(Utf8ToWide(store)))));
    return kExitOk;
}

int Backup(const std::string& store, const std::string& file) {
    const std::wstring copy = Utf8ToWide(file);
    RequireFileName(copy);
    if (GetFileAttributesW(copy.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return Fail(file + ": exists already", kExitFailed);
    }
    const auto db = OpenStore(Utf8ToWide(store));
    try {
        db->BackUp(copy);
        SqlDb(copy).Execute(DialectOf(SqlEngine::Sqlite).prepareFile);
        return kExitOk;
    } catch (const SqlError&) {
        DeleteFileW(copy.c_str());  // nobody takes the part for a copy
        throw;
    }
}

int Check(const std::string& store) {
    const auto db = OpenStore(Utf8ToWide(store));
    VerifyStore(*db, Utf8ToWide(store), VerifyDepth::kIndexesToo);
    const std::string name = ParseSqlAddress(Utf8ToWide(store)).name;
    for (const std::string& table : TablesOfAgents()) {
        const int64_t orphans =
            db->NumberOf("SELECT count(*) FROM " + table + " WHERE uid NOT IN (SELECT uid FROM agent)");
        if (orphans != 0) {
            return Fail(name + ": " + std::to_string(orphans) + " rows of " + table + " belong to no agent",
                        kExitFailed);
        }
    }
    PrintOut(name + ": version " + std::to_string(kStoreVersion) + ", " +
             std::to_string(db->NumberOf("SELECT count(*) FROM agent")) + " agents, no fault found\n");
    return kExitOk;
}

}  // namespace wrb
