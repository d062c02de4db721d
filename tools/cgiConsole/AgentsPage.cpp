#include <bit>

#include "Listing.h"
#include "Pages.h"

namespace wrb {
namespace {

constexpr ListColumn kColumns[] = {
    {"Computer", 2}, {"Address", 3}, {"Domain", 4}, {"Version", 5}, {"Agent", 1}, {"To fetch", 6, true},
};

constexpr ListSource kAgents = {
    .table = L"agents",
    .page = L"agents",
    .name = "agents",
    .searchLabel = "Computer, address, domain, version or identifier",
    .empty = "The store has no agent yet. Agents come with wrbback seed, or from another store.",
    .columns = kColumns,
};

Data RowOf(const Cells& cell) {
    const int changed = std::popcount(static_cast<uint32_t>(ParseInt64(cell(5))));
    Data row;
    row["href"] = "?page=agent&uid=" + UrlText(cell(0));
    row["uid"] = TextData(cell(0));
    row["computer"] = TextData(cell(1).empty() ? L"(no name)" : cell(1));
    row["ip"] = TextData(cell(2));
    row["domain"] = TextData(cell(3));
    row["version"] = TextData(cell(4));
    row["changed"] = NumberData(changed);
    row["isChanged"] = changed != 0;
    return row;
}

}  // namespace

View ShowAgents(const Request& request) {
    return ShowList(kAgents, request, RowOf);
}

}  // namespace wrb
