#include "ScanTable.h"

#include <string>

#include "SqlDb.h"

namespace wrb {
namespace {

using Values = ScanGroupValues;

struct NumberColumn {
    const char* name;
    ScanNumber member;
};
struct TextColumn {
    const char* name;
    ScanText member;
};

constexpr NumberColumn kNumberColumns[] = {
    {"flags", &Values::flags},
    {"compressed_layer", &Values::compressedLayer},
    {"ole_layer", &Values::oleLayer},
    {"possible_virus_action", &Values::possibleVirusCustActInActiveAct},
    {"frequency", &Values::frequency},
    {"hour", &Values::hour},
    {"minute", &Values::minute},
    {"am_pm", &Values::amPm},
    {"day_of_month", &Values::dayOfMonth},
    {"day_of_week", &Values::dayOfWeek},
    {"week_ordinal_of_month", &Values::weekOrdinalOfMonth},
    {"weekday_of_month", &Values::weekdayOfMonth},
};

constexpr TextColumn kTextColumns[] = {
    {"ext_list", &Values::extList},
    {"move_dir", &Values::moveDir},
    {"cust_action", &Values::custAction},
    {"excluded_folder", &Values::excludedFolder},
    {"excluded_file", &Values::excludedFile},
    {"excluded_ext", &Values::excludedExt},
    {"exclude_file_ext_list", &Values::excludeFileExtList},
};

// Every column, each with `prefix` in front.
std::string Columns(const std::string& prefix) {
    std::string list = prefix + "spyware_flags";
    for (const NumberColumn& column : kNumberColumns) {
        list += ", " + prefix + column.name;
    }
    for (const TextColumn& column : kTextColumns) {
        list += ", " + prefix + column.name;
    }
    return list;
}

void ApplyDefault(const ScanRow& row, ScanGroupKind kind, StoredScan& scan) {
    switch (row.kind) {
        case ScanRowKind::Bit:
            scan.Flags(kind) |= row.defaultNumber > 0 ? row.bits : 0;
            break;
        case ScanRowKind::Choice:
            scan.Flags(kind) |= row.choice->BitsOf(row.defaultNumber);
            break;
        case ScanRowKind::Int:
            scan.values.*row.number = row.defaultNumber;
            break;
        case ScanRowKind::Text:
        case ScanRowKind::CustomActionPair:
            scan.values.*row.text = row.defaultText;
            break;
        default:
            break;
    }
}

}  // namespace

StoredScan DefaultScan(ScanType type) {
    StoredScan scan;
    for (const ScanGroup& group : kScanGroups) {
        if (group.type == type) {
            for (const ScanRow& row : group.rows) {
                ApplyDefault(row, group.kind, scan);
            }
        }
    }
    scan.values.cleanFailedMoveDir.clear();
    return scan;
}

void InsertScan(SqlDb& db, const std::wstring& uid, ScanType type, const StoredScan& scan) {
    static const std::string sql =
        "INSERT INTO scan (uid, type, " + Columns("") + ") VALUES (:uid, :type, " + Columns(":") + ")";
    SqlStatement insert = db.Use(sql);
    insert.Bind(":uid", uid).Bind(":type", static_cast<int64_t>(type)).Bind(":spyware_flags", scan.spywareFlags);
    for (const NumberColumn& column : kNumberColumns) {
        insert.Bind(std::string(":") + column.name, scan.values.*column.member);
    }
    for (const TextColumn& column : kTextColumns) {
        insert.Bind(std::string(":") + column.name, scan.values.*column.member);
    }
    insert.Run();
}

std::optional<AgentScans> ReadScans(SqlDb& db, const std::wstring& uid) {
    static const std::string sql =
        "SELECT scan.type, " + Columns("scan.") +
        " FROM agent LEFT JOIN scan ON scan.uid = agent.uid WHERE agent.uid = :uid ORDER BY scan.type";
    SqlStatement read = db.Use(sql);
    read.Bind(":uid", uid);
    std::optional<AgentScans> agent;
    while (read.Step()) {
        if (!agent) {
            agent.emplace();
        }
        if (read.IsNull(0)) {
            break;  // the agent alone
        }
        if (!agent->scans) {
            agent->scans.emplace();
        }
        const auto type = static_cast<std::size_t>(read.Number(0));
        if (type >= agent->scans->size()) {
            throw SqlError(SqlFailure::Damaged, "the table scan has a row of type " + std::to_string(read.Number(0)));
        }
        StoredScan& scan = (*agent->scans)[type];
        int column = 1;
        scan.spywareFlags = static_cast<uint32_t>(read.Number(column++));
        for (const NumberColumn& number : kNumberColumns) {
            scan.values.*number.member = static_cast<uint32_t>(read.Number(column++));
        }
        for (const TextColumn& text : kTextColumns) {
            scan.values.*text.member = read.Text(column++);
        }
    }
    return agent;
}

}  // namespace wrb
