#include "DbListing.h"

#include "DbRequest.h"
#include "DebugLog.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kMostColumns = 64;

bool Parse(const std::wstring& answer, DbListing& listing) {
    CCmdProtocol fields(answer.data(), static_cast<int64_t>(answer.size() * sizeof(wchar_t)));
    std::wstring total;
    std::wstring columns;
    fields >> total >> columns;
    DbListing read;
    read.total = static_cast<uint64_t>(ParseInt64(total));
    read.columns = static_cast<std::size_t>(ParseInt64(columns));
    if (read.columns == 0 || read.columns > kMostColumns) {
        return false;
    }
    std::vector<std::wstring> row(read.columns);
    while (!fields.AtEnd()) {
        for (std::wstring& cell : row) {
            fields >> cell;
        }
        read.cells.insert(read.cells.end(), row.begin(), row.end());
    }
    listing = std::move(read);
    return true;
}

}  // namespace

bool ReadDbListing(const DbListQuery& query, DbListing& listing) noexcept {
    return GuardCall(WRB_HERE, DbName(DbCommand::ListRows), [&] {
        std::wstring answer;
        if (!AskDbText(DbName(DbCommand::ListRows), answer, query.table, query.search, query.order,
                       query.isDescending ? 1u : 0u, query.first, query.rows)) {
            return false;
        }
        const bool isListing = Parse(answer, listing);
        if (!isListing) {
            WRB_LOG(kLogError, L"%s - no such table: %s", DbName(DbCommand::ListRows), query.table.c_str());
        }
        return isListing;
    });
}

bool WriteDbAudit(const DbAudit& change) noexcept {
    return WriteDb(DbName(DbCommand::AddAudit), change.user, change.target, change.setting, change.oldValue,
                   change.newValue);
}

}  // namespace wrb
