#include "AllAgents.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "DbListing.h"
#include "ScanRowText.h"
#include "Text.h"

namespace wrb {
namespace {

using Values = ScanGroupValues;

// The lists of DB_LIST_ROWS that count the values of a column.
constexpr struct {
    ScanNumber member;
    const wchar_t* table;
} kNumbers[] = {
    {&Values::compressedLayer, L"scan.compressed_layer"},
    {&Values::oleLayer, L"scan.ole_layer"},
    {&Values::possibleVirusCustActInActiveAct, L"scan.possible_virus_action"},
    {&Values::frequency, L"scan.frequency"},
    {&Values::hour, L"scan.hour"},
    {&Values::minute, L"scan.minute"},
    {&Values::amPm, L"scan.am_pm"},
    {&Values::dayOfMonth, L"scan.day_of_month"},
    {&Values::dayOfWeek, L"scan.day_of_week"},
    {&Values::weekOrdinalOfMonth, L"scan.week_ordinal_of_month"},
    {&Values::weekdayOfMonth, L"scan.weekday_of_month"},
};
constexpr struct {
    ScanText member;
    const wchar_t* table;
} kTexts[] = {
    {&Values::extList, L"scan.ext_list"},
    {&Values::moveDir, L"scan.move_dir"},
    {&Values::custAction, L"scan.cust_action"},
    {&Values::excludedFolder, L"scan.excluded_folder"},
    {&Values::excludedFile, L"scan.excluded_file"},
    {&Values::excludedExt, L"scan.excluded_ext"},
    {&Values::excludeFileExtList, L"scan.exclude_file_ext_list"},
};

const wchar_t* TableOf(const ScanRow& row, ScanGroupKind kind) {
    if (row.kind == ScanRowKind::Bit || row.kind == ScanRowKind::Choice) {
        return kind == ScanGroupKind::Spyware ? L"scan.spyware_flags" : L"scan.flags";
    }
    if (row.kind == ScanRowKind::Int) {
        return std::ranges::find(kNumbers, row.number, [](const auto& each) { return each.member; })->table;
    }
    return std::ranges::find(kTexts, row.text, [](const auto& each) { return each.member; })->table;
}

Values ValuesWith(const ScanRow& row, const std::wstring& text) {
    Values values;
    const auto number = static_cast<uint32_t>(ParseInt64(text));
    if (row.number != nullptr) {
        values.*row.number = number;
    } else if (row.text != nullptr) {
        values.*row.text = text;
    } else {
        values.flags = number;
    }
    return values;
}

std::vector<ValueCount> Counted(const ScanRow& row, const DbListing& listing) {
    std::map<std::wstring, uint64_t> sums;
    for (std::size_t i = 0; i < listing.Rows(); ++i) {
        sums[ScanRowText(row, ValuesWith(row, listing.Cell(i, 0)))] +=
            static_cast<uint64_t>(ParseInt64(listing.Cell(i, 1)));
    }
    std::vector<ValueCount> counts;
    counts.reserve(sums.size());
    for (const auto& [value, agents] : sums) {
        counts.push_back({value, agents});
    }
    std::ranges::stable_sort(counts, std::greater(), &ValueCount::agents);
    return counts;
}

}  // namespace

AllAgentsValues ReadAllAgents(const ScanGroup& group) {
    AllAgentsValues all;
    std::map<std::wstring, DbListing> listings;  // most settings are bits of one column
    for (const SettingInfo& setting : SettingCatalog()) {
        if (setting.group != &group || !setting.IsSetFor(true)) {
            continue;
        }
        const std::wstring table = TableOf(*setting.row, group.kind);
        const auto [listing, isNew] = listings.try_emplace(table);
        if (isNew &&
            !ReadDbListing(
                {.table = table, .search = std::to_wstring(static_cast<int>(group.type)), .rows = kMostListedRows},
                listing->second)) {
            return {};
        }
        all.settings.push_back({&setting, Counted(*setting.row, listing->second)});
        all.agents = listing->second.total;
    }
    all.isAnswered = true;
    return all;
}

std::string CountsText(const AllAgentsValues::Setting& setting) {
    constexpr std::size_t kShown = 3;
    std::string text;
    for (std::size_t i = 0; i < std::min(kShown, setting.counts.size()); ++i) {
        const auto& [value, agents] = setting.counts[i];
        text += (i == 0 ? "" : "; ") + setting.setting->Shown(value) + " (" + std::to_string(agents) + ")";
    }
    const std::size_t more = setting.counts.size() - std::min(kShown, setting.counts.size());
    return text + (more == 0 ? "" : "; " + std::to_string(more) + " other values");
}

}  // namespace wrb
