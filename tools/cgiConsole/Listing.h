// A table of the database as part of a page: searched, ordered and turned by links, so that it needs no script.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "DbListing.h"
#include "Request.h"
#include "View.h"

namespace wrb {

// Text for a query: percent-encoded.
std::string UrlText(std::wstring_view text);

struct ListColumn {
    const char* title;
    uint32_t column;        // of the database's table, from 1
    bool isNumber = false;  // right-aligned
};

struct ListSource {
    const wchar_t* table;     // of DB_LIST_ROWS
    std::wstring_view page;   // whose links turn the table
    const char* name;         // for people: "agents"
    const char* searchLabel;  // null: no search
    const char* empty;        // what to do when there is nothing
    std::span<const ListColumn> columns;
    uint32_t rows = 50;  // on a page
};

// The cells of one row, by their column in the database's table, from 0.
using Cells = std::function<const std::wstring&(std::size_t column)>;

// The page of the rows that the request's parameters ("q", "sort", "desc", "from") ask for. `rowOf` makes the
// template's values of a row.
View ShowList(const ListSource& source, const Request& request, Data (*rowOf)(const Cells& cell));

// "2024-01-31 23:59:59" in local time; "never" for a time before 1970, 0, or one that the calendar cannot hold.
std::string TimeText(int64_t calendarSeconds);

}  // namespace wrb
