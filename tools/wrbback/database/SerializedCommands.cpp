#include "SerializedCommands.h"

#include "BundleTables.h"
#include "DbAllScanRecord.h"
#include "DbBundle.h"
#include "DbVexor.h"
#include "MsgSerializer.h"
#include "ScanTable.h"
#include "SqlDb.h"

namespace wrb {
namespace {

static_assert(kScanTypeCount == kScanTypes.size());

AllScanLists ListsOf(const StoredScans& scans) {
    AllScanLists lists;
    for (std::size_t i = 0; i < scans.size(); ++i) {
        const ScanGroupValues& values = scans[i].values;
        lists.scans[i] = {values.excludedFolder, values.excludedFile, values.excludedExt,
                          kScanTypes[i] == ScanType::RT ? std::wstring() : values.excludeFileExtList};
    }
    return lists;
}

bool AnswerAllScanCfg(SqlDb& db, const std::wstring& uid, CMsgSerializer& answer) {
    const std::optional<AgentScans> agent = ReadScans(db, uid);
    if (!agent) {
        return false;
    }
    AllScanConfig cfg;
    cfg.hasConfig = agent->scans.has_value();
    if (agent->scans) {
        cfg.hasExtra = ListsOf(*agent->scans).HasText();
        for (std::size_t i = 0; i < agent->scans->size(); ++i) {
            cfg.scans[i] = agent->scans->at(i).values;
            cfg.spywareFlags[i] = agent->scans->at(i).spywareFlags;
        }
    }
    answer << cfg;
    return true;
}

bool AnswerAllScanEx(SqlDb& db, const std::wstring& uid, CMsgSerializer& answer) {
    const std::optional<AgentScans> agent = ReadScans(db, uid);
    if (!agent) {
        return false;
    }
    answer << ListsOf(agent->scans.value_or(StoredScans()));
    return true;
}

bool AnswerCustomBm(SqlDb& db, const std::wstring& uid, CMsgSerializer& answer) {
    SqlStatement read = db.Use(
        "SELECT policy_id, action, enable FROM agent LEFT JOIN behaviour_policy AS policy ON policy.uid = agent.uid "
        "WHERE agent.uid = :uid ORDER BY position");
    read.Bind(":uid", uid);
    bool known = false;
    CustomBmConfig cfg;
    while (read.Step()) {
        known = true;
        if (!read.IsNull(0)) {
            tagVEXORPolicyItem& policy = cfg.policies.emplace_back();
            policy.policyId = read.Text(0);
            policy.action = static_cast<uint32_t>(read.Number(1));
            policy.enable = read.Number(2) != 0;
        }
    }
    if (known) {
        answer << cfg;
    }
    return known;
}

template <typename Values>
bool AnswerBundle(SqlDb& db, const std::wstring& uid, CMsgSerializer& answer) {
    const auto rows = ReadBundle<Values>(db, uid);
    if (!rows) {
        return false;
    }
    if constexpr (kHasItems<Values>) {
        answer << std::vector<BundleRecord<Values>>(rows->begin(), rows->end());
    } else {  // zeros for an agent without a record
        answer << BundleRecord<Values>(rows->empty() ? Values() : rows->front());
    }
    return true;
}

using Answer = bool (*)(SqlDb& db, const std::wstring& uid, CMsgSerializer& answer);

template <typename... Values>
Answer FindBundle(DbCommand command, const std::tuple<std::vector<Values>...>&) {
    Answer found = nullptr;
    static_cast<void>(((kBundleCommand<Values> == command && (found = AnswerBundle<Values>)) || ...));
    return found;
}

Answer FindAnswer(DbCommand command) {
    switch (command) {
        case DbCommand::ClientGetAllScanCfg:
            return AnswerAllScanCfg;
        case DbCommand::ClientGetAllScanEx:
            return AnswerAllScanEx;
        case DbCommand::GetVexorCustomBmCfg:
            return AnswerCustomBm;
        default:
            return FindBundle(command, AgentBundles());
    }
}

}  // namespace

bool AnswerSerializedCommand(SqlDb& db, DbCommand command, const std::wstring& uid, CMsgSerializer& answer) {
    const Answer write = FindAnswer(command);
    return write != nullptr && write(db, uid, answer);
}

}  // namespace wrb
