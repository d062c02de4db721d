// The text commands of the database server over the tables of the store: which SQL answers or carries out each.
#pragma once

#include <optional>
#include <string>

#include "CmdProtocol.h"
#include "DbCommands.h"

namespace wrb {

class SqlDb;

// What a read answers: the columns of all rows, TAB between them, numbers as signed 32-bit decimals. Nothing when the
// agent, or what is asked of it, does not exist. The cursor of `request` is after the reply id. Throws SqlError.
std::optional<std::wstring> AnswerTextCommand(SqlDb& db, DbCommand command, CCmdProtocol& request);

// Carries a write out, whole or not at all. Returns the rows that it changed; none: there is no such agent, or no such
// group. The first write of a scan setting gives an agent without a configuration one, from the product's defaults.
// Throws SqlError.
int64_t RunTextCommand(SqlDb& db, DbCommand command, CCmdProtocol& request);

}  // namespace wrb
