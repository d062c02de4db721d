#include "AgentUid.h"
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
    .empty = "Nobody has changed a setting yet.",
    .columns = kColumns,
};

Data RowOf(const Cells& cell) {
    Data row;
    row["time"] = TimeText(ParseInt64(cell(1)));
    row["user"] = TextData(cell(2));
    row["target"] = TextData(cell(3));
    row["isAgent"] = HasUidForm(cell(3));
    row["setting"] = TextData(cell(4));
    row["before"] = TextData(cell(5));
    row["after"] = TextData(cell(6));
    return row;
}

}  // namespace

View ShowAudit(const Request& request) {
    return ShowList(kAudit, request, RowOf);
}

}  // namespace wrb
