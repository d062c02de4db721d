// The rows of the log pool as JSON. An object has the keys "TBL", "COL", "VER" and "CATEGORY"; "COL" holds the columns,
// texts as JSON strings and numbers as JSON integers. docs/wire-formats.md lists them.
#pragma once

#include <cstdint>
#include <string>

#include "FirewallLogEntry.h"

namespace wrb {

struct LogTable {
    const char* name;
    int version;
    const char* category;
};

inline constexpr LogTable kCfwLogTable = {"TBL_CFW_LOG", 3, "CfwLogFieldInfo"};
inline constexpr LogTable kRestoreLogTable = {"TBL_RESTORE_LOG", 3, "RestoreLogFieldInfo"};

struct RestoreLog {
    const wchar_t* logId;
    const wchar_t* uid;  // null counts as empty
    int64_t received;    // calendar seconds
    int32_t logType;
    int32_t result;
};

// The whole row as text, on one line. An upload sends thousands, so it is written without a JSON tree; the keys are in
// alphabetical order, as the JSON writer puts them. An entry whose date cannot be converted has the second 0. Throws
// when memory is exhausted.
std::wstring CfwLogRow(const FirewallLogEntry& entry);

// The same by the JSON writer: 0, or what the writer reports.
int RestoreLogRow(const RestoreLog& log, std::wstring& text);

}  // namespace wrb
