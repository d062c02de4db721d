// The tables that the back end only writes: log rows and events. No command reads them. Parsing, storing and showing
// them all run over these descriptions.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace wrb {

enum class ColumnKind : uint8_t {
    Text,     // at most kLongestRecordText characters
    Uid,      // a text of which kUidCharacters count (AgentUid.h)
    Date,     // "YYYY-MM-DD hh:mm:ss"
    Address,  // 32 upper-case hexadecimal digits: the 16 bytes of an IPv6 address
    Word,     // 0 ... 65535
    Number,   // of 32 bits, signed
};

inline constexpr std::size_t kLongestRecordText = 4096;

struct RecordColumn {
    const char* name;  // in the database, in messages and in what is shown
    ColumnKind kind;
};

struct RecordTable {
    const char* name;
    std::span<const RecordColumn> columns;  // without "id", which counts the rows in the order of their arrival
};

extern const RecordTable kCfwLogRecords;
extern const RecordTable kRestoreLogRecords;
extern const RecordTable kEventRecords;

using RecordValue = std::variant<int64_t, std::wstring>;

// A row to be inserted. The values are checked and are in the order of the columns.
struct Record {
    const RecordTable* table;
    std::vector<RecordValue> values;
};

// Whether a column of that kind can hold the value.
bool FitsColumn(ColumnKind kind, const RecordValue& value);

const char* DescribeColumnKind(ColumnKind kind);

// "SELECT column, ... FROM table" and "INSERT INTO table (column, ...) VALUES (:column, ...), ..." for so many rows.
std::string SelectSql(const RecordTable& table);
std::string InsertSql(const RecordTable& table, std::size_t rows);

}  // namespace wrb
