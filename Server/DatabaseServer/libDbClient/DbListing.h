// Rows of the database's tables, for people, and the audit trail. docs/wire-formats.md names the tables and their
// columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wrb {

// The most rows of one answer.
inline constexpr uint32_t kMostListedRows = 500;

struct DbListQuery {
    std::wstring table;
    std::wstring search{};      // rows with this text in a column; for some tables an exact key. Empty: every row
    uint32_t order = 0;         // the column, from 1; 0: the table's own order
    bool isDescending = false;  // of the column
    uint32_t first = 0;         // rows that are left out
    uint32_t rows = 50;         // at most; no more than kMostListedRows come
};

struct DbListing {
    uint64_t total = 0;  // rows that match
    std::size_t columns = 0;
    std::vector<std::wstring> cells;  // row after row; no cell has a control character

    std::size_t Rows() const noexcept { return columns == 0 ? 0 : cells.size() / columns; }
    const std::wstring& Cell(std::size_t row, std::size_t column) const { return cells[row * columns + column]; }
};

// False, with a log line and `listing` as it was: the request failed, or the server does not know the table. Throws
// nothing. Any thread.
bool ReadDbListing(const DbListQuery& query, DbListing& listing) noexcept;

// One change that a person has made.
struct DbAudit {
    std::wstring user;
    std::wstring target;  // an agent's uid, or what else was changed
    std::wstring setting;
    std::wstring oldValue;
    std::wstring newValue;
};

// True once the bytes are on the pipe. The server adds the time.
bool WriteDbAudit(const DbAudit& change) noexcept;

}  // namespace wrb
