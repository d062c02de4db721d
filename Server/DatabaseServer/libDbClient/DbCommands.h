// The commands of the database server as data, for the client and for a back end: name on the wire, shape of the
// answer, fields. DbCommands.inc holds the rows.
//
// Text commands are a CCmdProtocol text: name, reply id, request fields. The reply id names the reply pipe "DbCln_%d";
// -1 stands there when no answer is wanted. Commands with the answer Message are serialized.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

enum class DbAnswer : uint8_t {
    None,     // a write: nothing comes back
    Number,   // one decimal number
    Text,     // the text as it came
    Record,   // a fixed list of fields, TAB between them
    List,     // any number of fields, TAB between them; an empty one ends the list
    Message,  // serialized: a message whose body is one record
};

enum class DbCommand : uint8_t {
#define WRB_DB_COMMAND(id, name, answer, request, fields) id,
#include "DbCommands.inc"
#undef WRB_DB_COMMAND
};

namespace wrb {

struct DbCommandRow {
    const wchar_t* name;
    const char* requestFields;  // names of the fields after the reply id, ", " between them
    const char* answerFields;   // the same for the answer; a description where the number of fields is open
    DbCommand id;
    DbAnswer answer;
};

}  // namespace wrb

inline constexpr wrb::DbCommandRow kDbCommands[] = {
#define WRB_DB_COMMAND(id, name, answer, request, fields) {L"" name, request, fields, DbCommand::id, DbAnswer::answer},
#include "DbCommands.inc"
#undef WRB_DB_COMMAND
};

namespace wrb {

constexpr const DbCommandRow& DescribeDbCommand(DbCommand command) {
    return kDbCommands[static_cast<std::size_t>(command)];
}

constexpr const wchar_t* DbName(DbCommand command) {
    return DescribeDbCommand(command).name;
}

// The command with this name on the wire (case-sensitive), if there is one.
constexpr std::optional<DbCommand> FindDbCommand(std::wstring_view name) {
    for (const DbCommandRow& command : kDbCommands) {
        if (name == command.name) {
            return command.id;
        }
    }
    return std::nullopt;
}

}  // namespace wrb
