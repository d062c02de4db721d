#include "Listing.h"

#include <algorithm>
#include <cstdio>

#include "CalendarTime.h"

namespace wrb {
namespace {

struct Position {
    std::wstring search;
    uint32_t order;
    bool isDescending;
    uint32_t first;
};

Position PositionOf(const Request& request) {
    return {request.Text(L"q"), static_cast<uint32_t>(std::max(0, request.Number(L"sort"))),
            request.Number(L"desc") == 1, static_cast<uint32_t>(std::max(0, request.Number(L"from")))};
}

std::string Link(const ListSource& source, const Position& position) {
    std::string link = "?page=" + UrlText(source.page);
    link += position.search.empty() ? "" : "&q=" + UrlText(position.search);
    link += position.order == 0 ? "" : "&sort=" + std::to_string(position.order);
    link += position.isDescending ? "&desc=1" : "";
    return link + (position.first == 0 ? "" : "&from=" + std::to_string(position.first));
}

// A click on the head of the column that orders turns the order around.
Data Heads(const ListSource& source, const Position& position) {
    Data heads = ListData();
    for (const ListColumn& column : source.columns) {
        const bool isOrder = position.order == column.column;
        Data head;
        head["title"] = column.title;
        head["number"] = column.isNumber;
        head["href"] = Link(source, {position.search, column.column, isOrder && !position.isDescending, 0});
        head["up"] = isOrder && !position.isDescending;
        head["down"] = isOrder && position.isDescending;
        heads.push_back(head);
    }
    return heads;
}

Data ListFrame(const ListSource& source, const Position& position, const DbListing& listing, bool isAnswered) {
    const auto shown = static_cast<uint32_t>(listing.Rows());
    Data data;
    data["page"] = TextData(source.page);
    data["name"] = source.name;
    data["empty"] = source.empty;
    data["hasSearch"] = source.searchLabel != nullptr;
    data["searchLabel"] = source.searchLabel == nullptr ? "" : source.searchLabel;
    data["search"] = TextData(position.search);
    data["isSearched"] = !position.search.empty();
    data["heads"] = Heads(source, position);
    data["answered"] = isAnswered;
    data["any"] = shown != 0;
    data["first"] = NumberData(position.first + 1);
    data["last"] = NumberData(position.first + shown);
    data["total"] = NumberData(listing.total);
    data["hasPrevious"] = position.first != 0;
    data["hasNext"] = position.first + shown < listing.total;
    Position other = position;
    other.first = position.first - std::min(position.first, source.rows);
    data["previous"] = Link(source, other);
    other.first = position.first + source.rows;
    data["next"] = Link(source, other);
    return data;
}

}  // namespace

std::string UrlText(std::wstring_view text) {
    std::string encoded;
    for (const char byte : WideToUtf8(text)) {
        const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_' || byte == '.';
        char escape[4] = {byte};
        if (!isPlain) {
            std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        }
        encoded += escape;
    }
    return encoded;
}

View ShowList(const ListSource& source, const Request& request, Data (*rowOf)(const Cells& cell)) {
    const Position position = PositionOf(request);
    DbListing listing;
    const bool isAnswered = ReadDbListing({.table = source.table,
                                           .search = position.search,
                                           .order = position.order,
                                           .isDescending = position.isDescending,
                                           .first = position.first,
                                           .rows = source.rows},
                                          listing);
    View view;
    view.data = ListFrame(source, position, listing, isAnswered);
    Data rows = ListData();
    for (std::size_t i = 0; i < listing.Rows(); ++i) {
        rows.push_back(rowOf([&](std::size_t column) -> const std::wstring& { return listing.Cell(i, column); }));
    }
    view.data["rows"] = std::move(rows);
    return view;
}

std::string TimeText(int64_t calendarSeconds) {
    const std::wstring text = calendarSeconds > 0 ? LocalTimeText(calendarSeconds) : std::wstring();
    return text.empty() ? "never" : WideToUtf8(text);
}

}  // namespace wrb
