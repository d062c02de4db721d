#include "RecordTable.h"

#include <algorithm>

namespace wrb {
namespace {

constexpr RecordColumn kCfwLogColumns[] = {
    {"UID", ColumnKind::Uid},
    {"DATE", ColumnKind::Date},
    {"LOCAL_HOST", ColumnKind::Address},
    {"REMOTEHOST", ColumnKind::Address},
    {"PROTOCOL", ColumnKind::Word},
    {"TYPE", ColumnKind::Word},
    {"SUBTYPE", ColumnKind::Word},
    {"PORT", ColumnKind::Word},
    {"DIRECTION", ColumnKind::Word},
    {"PV_NAME", ColumnKind::Text},
    {"LOG_TYPE", ColumnKind::Word},
};

constexpr RecordColumn kRestoreLogColumns[] = {
    {"LOGID", ColumnKind::Text},      {"UID", ColumnKind::Uid},       {"RECV_TIME", ColumnKind::Date},
    {"LOG_TYPE", ColumnKind::Number}, {"RESULT", ColumnKind::Number},
};

constexpr RecordColumn kEventColumns[] = {
    {"RECEIVED", ColumnKind::Date},
    {"SERVICE", ColumnKind::Text},
    {"NAME", ColumnKind::Text},
    {"FIELDS", ColumnKind::Text},
};

constexpr std::wstring_view kDatePattern = L"0000-00-00 00:00:00";
constexpr std::size_t kAddressDigits = 32;

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

bool IsDate(const std::wstring& text) {
    return std::ranges::equal(text, kDatePattern,
                              [](wchar_t c, wchar_t pattern) { return pattern == L'0' ? IsDigit(c) : c == pattern; });
}

bool IsAddress(const std::wstring& text) {
    return text.size() == kAddressDigits &&
           std::ranges::all_of(text, [](wchar_t c) { return IsDigit(c) || (c >= L'A' && c <= L'F'); });
}

std::string Joined(const RecordTable& table, const char* before) {
    std::string text;
    for (const RecordColumn& column : table.columns) {
        text += (text.empty() ? "" : ", ") + std::string(before) + column.name;
    }
    return text;
}

}  // namespace

const RecordTable kCfwLogRecords = {"TBL_CFW_LOG", kCfwLogColumns};
const RecordTable kRestoreLogRecords = {"TBL_RESTORE_LOG", kRestoreLogColumns};
const RecordTable kEventRecords = {"event", kEventColumns};

bool FitsColumn(ColumnKind kind, const RecordValue& value) {
    if (const auto* number = std::get_if<int64_t>(&value)) {
        return (kind == ColumnKind::Word && *number >= 0 && *number <= UINT16_MAX) ||
               (kind == ColumnKind::Number && *number >= INT32_MIN && *number <= INT32_MAX);
    }
    const std::wstring& text = std::get<std::wstring>(value);
    return ((kind == ColumnKind::Text || kind == ColumnKind::Uid) && text.size() <= kLongestRecordText) ||
           (kind == ColumnKind::Date && IsDate(text)) || (kind == ColumnKind::Address && IsAddress(text));
}

const char* DescribeColumnKind(ColumnKind kind) {
    switch (kind) {
        case ColumnKind::Text:
        case ColumnKind::Uid:
            return "a text of at most 4096 characters";
        case ColumnKind::Date:
            return "a date and time such as \"2024-01-31 23:59:59\"";
        case ColumnKind::Address:
            return "32 upper-case hexadecimal digits";
        case ColumnKind::Word:
            return "a whole number from 0 to 65535";
        case ColumnKind::Number:
            return "a whole number of 32 bits";
    }
    return "";
}

std::string SelectSql(const RecordTable& table) {
    return "SELECT " + Joined(table, "") + " FROM " + table.name;
}

std::string InsertSql(const RecordTable& table, std::size_t rows) {
    const std::string row = "(" + Joined(table, ":") + ")";
    std::string sql = std::string("INSERT INTO ") + table.name + " (" + Joined(table, "") + ") VALUES " + row;
    for (std::size_t i = 1; i < rows; ++i) {
        sql += ", " + row;
    }
    return sql;
}

}  // namespace wrb
