#include "SeedStore.h"

#include "SqlDb.h"

namespace wrb {
namespace {

void InsertAgent(SqlDb& db, const SeedAgent& agent) {
    std::string columns = "uid";
    std::string parameters = ":uid";
    for (const SeedValue& value : agent.values) {
        columns += std::string(", ") + value.column->column;
        parameters += std::string(", :") + value.column->column;
    }
    SqlStatement insert = db.Use("INSERT INTO agent (" + columns + ") VALUES (" + parameters + ")");
    insert.Bind(":uid", agent.uid);
    for (const SeedValue& value : agent.values) {
        const std::string name = std::string(":") + value.column->column;
        if (value.column->isText) {
            insert.Bind(name, value.text);
        } else {
            insert.Bind(name, value.number);
        }
    }
    insert.Run();
}

void InsertList(SqlDb& db, const char* sql, const std::wstring& uid, const std::vector<std::wstring>& texts) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
        SqlStatement insert = db.Use(sql);
        insert.Bind(":uid", uid).Bind(":position", static_cast<int64_t>(i)).Bind(":text", texts[i]).Run();
    }
}

void InsertPolicies(SqlDb& db, const SeedAgent& agent) {
    for (std::size_t i = 0; i < agent.policies.size(); ++i) {
        const SeedPolicy& policy = agent.policies[i];
        SqlStatement insert = db.Use(
            "INSERT INTO behaviour_policy (uid, position, policy_id, action, enable) "
            "VALUES (:uid, :position, :id, :action, :enable)");
        insert.Bind(":uid", agent.uid).Bind(":position", static_cast<int64_t>(i)).Bind(":id", policy.id);
        insert.Bind(":action", policy.action).Bind(":enable", policy.enable ? 1 : 0).Run();
    }
}

void StoreAgent(SqlDb& db, const SeedAgent& agent) {
    db.Use("DELETE FROM agent WHERE uid = :uid").Bind(":uid", agent.uid).Run();
    InsertAgent(db, agent);
    InsertList(db, "INSERT INTO spyware_approved (uid, position, item) VALUES (:uid, :position, :text)", agent.uid,
               agent.approvedSpyware);
    InsertList(db, "INSERT INTO restore_session (uid, position, session) VALUES (:uid, :position, :text)", agent.uid,
               agent.restoreSessions);
    InsertPolicies(db, agent);
    InsertBundles(db, agent.uid, agent.bundles);
    if (agent.scans) {
        for (const ScanType type : kScanTypes) {
            InsertScan(db, agent.uid, type, agent.scans->at(static_cast<std::size_t>(type)));
        }
    }
}

void StoreServiceSwitches(SqlDb& db, const std::vector<bool>& switches) {
    for (std::size_t i = 0; i < switches.size(); ++i) {
        SqlStatement update = db.Use("UPDATE service_switch SET enabled = :enabled WHERE position = :position");
        update.Bind(":enabled", switches[i] ? 1 : 0).Bind(":position", static_cast<int64_t>(i)).Run();
    }
}

}  // namespace

void StoreSeed(SqlDb& db, const SeedData& seed) {
    SqlTransaction transaction(db);
    for (const SeedAgent& agent : seed.agents) {
        StoreAgent(db, agent);
    }
    if (seed.serviceSwitches) {
        StoreServiceSwitches(db, *seed.serviceSwitches);
    }
    transaction.Commit();
}

}  // namespace wrb
