#include "SeedStore.h"

#include <iterator>
#include <string>

#include "AgentColumns.h"
#include "Bundles.h"
#include "SqlDb.h"

namespace wrb {
namespace {

// What differs from the default of a new agent.
std::vector<SeedValue> ValuesOf(const SqlStatement& row) {
    std::vector<SeedValue> values;
    int column = 1;
    for (const AgentColumn& description : AgentColumns()) {
        SeedValue value{&description, {}, 0};
        if (description.isText) {
            value.text = row.Text(column++);
        } else {
            value.number = static_cast<uint32_t>(row.Number(column++));
        }
        if (!value.text.empty() || value.number != 0) {
            values.push_back(std::move(value));
        }
    }
    return values;
}

std::vector<SeedAgent> ReadAgents(SqlDb& db) {
    std::string sql = "SELECT uid";
    for (const AgentColumn& column : AgentColumns()) {
        sql += std::string(", ") + column.column;
    }
    std::vector<SeedAgent> agents;
    for (SqlStatement read = db.Use(sql + " FROM agent ORDER BY uid"); read.Step();) {
        SeedAgent& agent = agents.emplace_back();
        agent.uid = read.Text(0);
        agent.values = ValuesOf(read);
    }
    return agents;
}

std::vector<std::wstring> ReadList(SqlDb& db, const char* sql, const std::wstring& uid) {
    std::vector<std::wstring> texts;
    SqlStatement read = db.Use(sql);
    for (read.Bind(":uid", uid); read.Step();) {
        texts.push_back(read.Text(0));
    }
    return texts;
}

std::vector<SeedPolicy> ReadPolicies(SqlDb& db, const std::wstring& uid) {
    std::vector<SeedPolicy> policies;
    SqlStatement read =
        db.Use("SELECT policy_id, action, enable FROM behaviour_policy WHERE uid = :uid ORDER BY position");
    for (read.Bind(":uid", uid); read.Step();) {
        policies.push_back({read.Text(0), static_cast<uint32_t>(read.Number(1)), read.Number(2) != 0});
    }
    return policies;
}

template <typename Values>
void ReadRows(SqlDb& db, const std::wstring& uid, std::vector<Values>& rows) {
    rows = ReadBundle<Values>(db, uid).value_or(std::vector<Values>());
}

}  // namespace

SeedData ReadSeed(SqlDb& db) {
    SeedData seed{ReadAgents(db), std::vector<bool>()};
    for (SeedAgent& agent : seed.agents) {
        agent.approvedSpyware =
            ReadList(db, "SELECT item FROM spyware_approved WHERE uid = :uid ORDER BY position", agent.uid);
        agent.restoreSessions =
            ReadList(db, "SELECT session FROM restore_session WHERE uid = :uid ORDER BY position", agent.uid);
        agent.policies = ReadPolicies(db, agent.uid);
        std::apply([&](auto&... rows) { (ReadRows(db, agent.uid, rows), ...); }, agent.bundles);
        if (const auto scans = ReadScans(db, agent.uid)) {
            agent.scans = scans->scans;
        }
    }
    for (SqlStatement read = db.Use("SELECT enabled FROM service_switch ORDER BY position"); read.Step();) {
        seed.serviceSwitches->push_back(read.Number(0) != 0);
    }
    if (seed.serviceSwitches->size() != std::size(kServiceSwitchRows)) {
        throw SqlError(SqlFailure::Damaged, "the table service_switch has " +
                                                std::to_string(seed.serviceSwitches->size()) + " rows, not " +
                                                std::to_string(std::size(kServiceSwitchRows)));
    }
    return seed;
}

}  // namespace wrb
