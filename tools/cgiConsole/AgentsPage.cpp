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

int BitsIn(uint64_t word) {
    int bits = 0;
    for (; word != 0; word &= word - 1) {
        ++bits;
    }
    return bits;
}

}  // namespace

View ShowAgents(const Request& request) {
    ListPage list = ReadList(kAgents, request);
    Data rows = ListData();
    for (std::size_t i = 0; i < list.listing.Rows(); ++i) {
        const auto cell = [&](std::size_t column) -> const std::wstring& { return list.listing.Cell(i, column); };
        const int changed = BitsIn(static_cast<uint64_t>(ParseInt64(cell(5))) & UINT32_MAX);
        Data row;
        row["href"] = "?page=agent&uid=" + UrlText(cell(0));
        row["uid"] = TextData(cell(0));
        row["computer"] = TextData(cell(1).empty() ? L"(no name)" : cell(1));
        row["ip"] = TextData(cell(2));
        row["domain"] = TextData(cell(3));
        row["version"] = TextData(cell(4));
        row["changed"] = NumberData(changed);
        row["isChanged"] = changed != 0;
        rows.push_back(row);
    }
    View view;
    view.data = std::move(list.data);
    view.data["rows"] = std::move(rows);
    return view;
}

}  // namespace wrb
