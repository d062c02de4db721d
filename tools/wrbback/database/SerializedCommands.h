// The serialized commands of the database server.
#pragma once

#include <string>

#include "DbCommands.h"

class CMsgSerializer;

namespace wrb {

class SqlDb;

// Writes the record that the command asks for into `answer`. False when there is no such agent, or the command is not
// one of these. Throws SqlError.
bool AnswerSerializedCommand(SqlDb& db, DbCommand command, const std::wstring& uid, CMsgSerializer& answer);

}  // namespace wrb
