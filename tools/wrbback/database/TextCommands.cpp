#include "TextCommands.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "Clock.h"
#include "Listing.h"
#include "ScanTable.h"
#include "SqlDb.h"
#include "Store.h"
#include "Text.h"
#include "TextCommandTable.h"

namespace wrb {
namespace {

// Tables that grow with each write: the rows that are kept.
constexpr struct {
    DbCommand command;
    const char* table;
    int64_t rows;
} kBoundedTables[] = {
    {DbCommand::SetSpecialLog, "special_log", 10'000},
    {DbCommand::AddAudit, "audit", 1'000'000},
};

// A request's fields under the names that a row of the table gives them.
struct Field {
    std::string name;
    std::wstring text;
};

std::vector<Field> TakeFields(const TextCommandRow& row, CCmdProtocol request) {
    std::vector<Field> fields;
    for (std::string_view rest = row.fields; !rest.empty();) {
        const std::size_t end = std::min(rest.size(), rest.find(' '));
        Field& field = fields.emplace_back(Field{std::string(rest.substr(0, end)), {}});
        request >> field.text;
        rest.remove_prefix(std::min(rest.size(), end + 1));
    }
    return fields;
}

const std::wstring* Find(const std::vector<Field>& fields, std::string_view name) {
    const auto found = std::ranges::find(fields, name, &Field::name);
    return found == fields.end() ? nullptr : &found->text;
}

// The scan type of the group that the request's configuration bit names, if it is one of this kind.
std::optional<ScanType> TypeOfBit(const std::vector<Field>& fields, ScanGroupKind kind) {
    const std::wstring* bit = Find(fields, "bit");
    for (const ScanGroup& group : kScanGroups) {
        if (bit != nullptr && group.kind == kind && ParseInt64(*bit) == group.configFlag) {
            return group.type;
        }
    }
    return std::nullopt;
}

struct Call {
    const TextCommandRow* row;
    std::vector<Field> fields;
    ScanType type;
};

// Nothing when there is no such command, or no group with the bit that it names.
std::optional<Call> Resolve(DbCommand command, const CCmdProtocol& request) {
    for (const TextCommandRow& row : TextCommandRows()) {
        if (row.command != command) {
            continue;
        }
        std::vector<Field> fields = TakeFields(row, request);
        std::optional<ScanType> type;
        switch (row.scan) {
            case ScanOf::MainBit:
                type = TypeOfBit(fields, ScanGroupKind::Main);
                break;
            case ScanOf::ExclusionBit:
                type = TypeOfBit(fields, ScanGroupKind::Exclusion);
                break;
            case ScanOf::None:
                type = ScanType::MS;  // not used
                break;
            default:
                type = static_cast<ScanType>(static_cast<int>(row.scan) - static_cast<int>(ScanOf::MS));
        }
        if (type) {
            return Call{&row, std::move(fields), *type};
        }
    }
    return std::nullopt;
}

SqlStatement Prepare(SqlDb& db, const Call& call) {
    return db.Use(std::string(call.row->sql) + call.row->where);
}

void BindAll(SqlStatement& statement, const Call& call) {
    statement.Bind("@type", static_cast<int64_t>(call.type));
    statement.Bind("$now", SystemClock().CalendarSeconds());
    for (const Field& field : call.fields) {
        switch (field.name[0]) {
            case ':':
                statement.Bind(field.name, field.text);
                break;
            case '@':
                statement.Bind(field.name, ParseInt64(field.text) & 0xFFFFFFFF);
                break;
            case '$':
                statement.Bind(field.name, ParseInt64(field.text));
                break;
            default:
                break;
        }
    }
}

int64_t Run(SqlDb& db, const Call& call) {
    SqlStatement statement = Prepare(db, call);
    BindAll(statement, call);
    statement.Run();
    return db.Changes();
}

// False when there is no such agent. One that has a configuration by now has got it from another server.
bool GiveConfiguration(SqlDb& db, const std::wstring& uid) {
    const std::optional<AgentScans> agent = ReadScans(db, uid);
    if (agent && !agent->scans) {
        for (const ScanType type : kScanTypes) {
            InsertScan(db, uid, type, DefaultScan(type));
        }
    }
    return agent.has_value();
}

}  // namespace

std::optional<std::wstring> AnswerTextCommand(SqlDb& db, DbCommand command, CCmdProtocol& request) {
    if (command == DbCommand::ListRows) {
        return ListRows(db, request);
    }
    const std::optional<Call> call = Resolve(command, request);
    if (!call) {
        return std::nullopt;
    }
    SqlStatement statement = Prepare(db, *call);
    BindAll(statement, *call);
    std::optional<std::wstring> answer;
    while (statement.Step()) {
        for (int column = 0; column < statement.Columns(); ++column) {
            if (answer) {
                *answer += L'\t';
            } else {
                answer.emplace();
            }
            // A word of 0x80000000 and above must go out as the negative number: that is how clients read it.
            *answer += statement.IsNumber(column) ? std::to_wstring(static_cast<int32_t>(statement.Number(column)))
                                                  : statement.Text(column);
        }
    }
    return answer;
}

int64_t RunTextCommand(SqlDb& db, DbCommand command, CCmdProtocol& request) {
    const std::optional<Call> call = Resolve(command, request);
    if (!call) {
        return 0;
    }
    SqlTransaction transaction(db);
    int64_t changed = Run(db, *call);
    const std::wstring* uid = Find(call->fields, ":uid");
    if (changed == 0 && call->row->scan != ScanOf::None && uid != nullptr && GiveConfiguration(db, *uid)) {
        changed = Run(db, *call);
    }
    for (const auto& bounded : kBoundedTables) {
        if (bounded.command == command) {
            KeepLatest(db, bounded.table, bounded.rows);
        }
    }
    transaction.Commit();
    return changed;
}

}  // namespace wrb
