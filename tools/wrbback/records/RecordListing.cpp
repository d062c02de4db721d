#include "RecordListing.h"

#include <algorithm>

#include "Dialect.h"
#include "IpAddress.h"
#include "JsonText.h"
#include "SqlDb.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr std::size_t kPieceBytes = 64 * 1024;

std::size_t WidthOf(const RecordColumn& column) {
    switch (column.kind) {
        case ColumnKind::Date:
            return 19;
        case ColumnKind::Address:
            return 39;  // the longest IPv6 address
        case ColumnKind::Word:
        case ColumnKind::Number:
            return 10;
        default:
            return 36;
    }
}

std::wstring CellText(const RecordColumn& column, const std::wstring& text) {
    return column.kind == ColumnKind::Address ? FormatHexIpAddress(text) : VisibleText(text);
}

class Piecewise {
  public:
    explicit Piecewise(const ListingSink& print) : m_print(print) {}

    void Add(const std::string& text) {
        m_text += text;
        if (m_text.size() >= kPieceBytes) {
            Flush();
        }
    }

    void Flush() {
        m_print(m_text);
        m_text.clear();
    }

  private:
    const ListingSink& m_print;
    std::string m_text;
};

using Visit = std::function<void(const SqlStatement& row)>;

std::string FromOf(const RecordTable& table, const RecordChoice& choice) {
    return std::string(" FROM ") + table.name + (choice.uid.empty() ? "" : " WHERE UID = :uid");
}

uint64_t ForEachRow(SqlDb& db, const RecordTable& table, const RecordChoice& choice, const Visit& visit) {
    const uint64_t most = choice.limit == 0 ? INT64_MAX : std::min<uint64_t>(choice.limit, INT64_MAX);
    SqlStatement select = db.Use(SelectSql(table) + " WHERE id IN (SELECT id" + FromOf(table, choice) +
                                 " ORDER BY id DESC" + DialectOf(db.Engine()).page + ") ORDER BY id");
    select.Bind(":uid", choice.uid).Bind("@first", int64_t{0}).Bind("@rows", static_cast<int64_t>(most));
    uint64_t rows = 0;
    for (; select.Step(); ++rows) {
        visit(select);
    }
    return rows;
}

// Trailing blanks are left out.
std::string Line(const RecordTable& table, const std::function<std::wstring(int column)>& cell) {
    std::wstring line;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const std::wstring text = cell(static_cast<int>(i));
        line += (i == 0 ? L"" : L"  ") + text;
        line.append(WidthOf(table.columns[i]) - std::min(WidthOf(table.columns[i]), text.size()), L' ');
    }
    line.resize(line.find_last_not_of(L' ') + 1);
    return WideToUtf8(line) + "\n";
}

Json::Value JsonRow(const RecordTable& table, const SqlStatement& row) {
    Json::Value value(Json::objectValue);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const int column = static_cast<int>(i);
        value[table.columns[i].name] =
            row.IsNumber(column) ? Json::Value(row.Number(column)) : Json::Value(WideToUtf8(row.Text(column)));
    }
    return value;
}

}  // namespace

void ListAsText(SqlDb& db, const RecordTable& table, const RecordChoice& choice, const ListingSink& print) {
    Piecewise out(print);
    out.Add(Line(table, [&](int i) { return Utf8ToWide(table.columns[static_cast<std::size_t>(i)].name); }));
    const uint64_t shown = ForEachRow(db, table, choice, [&](const SqlStatement& row) {
        out.Add(Line(table, [&](int column) {
            return CellText(table.columns[static_cast<std::size_t>(column)], row.Text(column));
        }));
    });
    SqlStatement count = db.Use("SELECT count(*)" + FromOf(table, choice));
    count.Bind(":uid", choice.uid);
    out.Add(std::string(table.name) + ": " + std::to_string(shown) + " of " +
            std::to_string(count.Step() ? count.Number(0) : 0) + " rows\n");
    out.Flush();
}

void ListAsJson(SqlDb& db, const RecordTable& table, const RecordChoice& choice, const ListingSink& print) {
    Piecewise out(print);
    const char* between = "[\n  ";
    const uint64_t shown = ForEachRow(db, table, choice, [&](const SqlStatement& row) {
        out.Add(between + JsonLine(JsonRow(table, row)));
        between = ",\n  ";
    });
    out.Add(shown == 0 ? "[]" : "\n]");
    out.Flush();
}

}  // namespace wrb
