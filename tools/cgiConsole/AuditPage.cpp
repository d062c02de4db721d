#include "Listing.h"
#include "Pages.h"

namespace wrb {
namespace {

constexpr ListColumn kColumns[] = {{"Time", 2}, {"User", 3}, {"Changed", 4}, {"Setting", 5}, {"From", 6}, {"To", 7}};

constexpr ListSource kAudit = {
    .table = L"audit",
    .page = L"audit",
    .name = "changes",
    .searchLabel = "User, agent, setting or value",
    .empty = "Nobody has changed anything by the console yet.",
    .columns = kColumns,
};

}  // namespace

View ShowAudit(const Request& request) {
    ListPage list = ReadList(kAudit, request);
    Data rows = ListData();
    for (std::size_t i = 0; i < list.listing.Rows(); ++i) {
        const auto cell = [&](std::size_t column) -> const std::wstring& { return list.listing.Cell(i, column); };
        Data row;
        row["time"] = TimeText(ParseInt64(cell(1)));
        row["user"] = TextData(cell(2));
        row["target"] = TextData(cell(3));
        row["isAgent"] = cell(3).size() == 36;
        row["setting"] = TextData(cell(4));
        row["before"] = TextData(cell(5));
        row["after"] = TextData(cell(6));
        rows.push_back(row);
    }
    View view;
    view.data = std::move(list.data);
    view.data["rows"] = std::move(rows);
    return view;
}

}  // namespace wrb
