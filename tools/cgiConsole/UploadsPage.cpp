#include <iterator>

#include "AlertSettings.h"
#include "Clock.h"
#include "INICache.h"
#include "IpAddress.h"
#include "Listing.h"
#include "LiveBoard.h"
#include "Pages.h"
#include "TicketSettings.h"

namespace wrb {
namespace {

constexpr uint32_t kLatest = 20;

// The log pool has addresses as 32 digits.
bool IsAddress(const std::wstring& text) {
    return text.size() == 32 && text.find_first_not_of(L"0123456789ABCDEF") == text.npos;
}

// Rows of a table without their number, for the template "records".
Data Latest(const wchar_t* table, const char* title, std::initializer_list<const char*> heads) {
    DbListing listing;
    const bool isAnswered = ReadDbListing({.table = table, .rows = kLatest}, listing);
    Data rows = ListData();
    for (std::size_t i = 0; i < listing.Rows(); ++i) {
        Data cells = ListData();
        for (std::size_t column = 1; column < listing.columns; ++column) {
            const std::wstring& text = listing.Cell(i, column);
            cells.push_back(TextData(IsAddress(text) ? FormatHexIpAddress(text) : text));
        }
        Data row;
        row["cells"] = std::move(cells);
        rows.push_back(row);
    }
    Data data;
    data["id"] = TextData(table);
    data["title"] = title;
    data["answered"] = isAnswered;
    data["any"] = listing.Rows() != 0;
    data["rows"] = std::move(rows);
    data["total"] = NumberData(listing.total);
    data["shown"] = NumberData(listing.Rows());
    Data names = ListData();
    for (const char* const head : heads) {
        names.push_back(Data(head));
    }
    data["heads"] = std::move(names);
    return data;
}

template <std::size_t count>
Data Clients(const std::array<LiveClient, count>& clients) {
    Data rows = ListData();
    for (const LiveClient& client : clients) {
        if (client.uid[0] != L'\0') {
            Data row;
            row["uid"] = TextData(client.uid);
            row["href"] = "?page=agent&uid=" + UrlText(client.uid);
            row["until"] = TimeText(client.until);
            rows.push_back(row);
        }
    }
    return rows;
}

// Who holds a slot and who waits, as the host last had it.
void AddClients(const std::optional<LiveState>& state, Data& data) {
    const LiveUploads uploads = state ? state->uploads : LiveUploads{};
    data["hasClients"] = uploads.changed != 0;
    data["clientsTime"] = TimeText(uploads.changed);
    data["uploadingCount"] = NumberData(uploads.uploading);
    data["waitingCount"] = NumberData(uploads.waiting);
    data["uploading"] = Clients(uploads.firstUploading);
    data["waiting"] = Clients(uploads.firstWaiting);
    data["isUploading"] = uploads.uploading != 0;
    data["isWaiting"] = uploads.waiting != 0;
}

// The sums of the last window beside the thresholds in force.
void AddAlerts(const std::optional<LiveState>& state, Data& data) {
    constexpr const char* kSums[] = {"Intrusions", "Firewall rules", "Total"};
    const AlertSettings settings(ScanIniCache());
    const AlertLimits limits = settings.Limits();
    const LiveAlerts alerts = state ? state->alerts : LiveAlerts{};
    const bool isCurrent = alerts.changed + limits.windowSeconds > SystemClock().CalendarSeconds();
    Data rows = ListData();
    for (std::size_t i = 0; i < kAlertCounts; ++i) {
        const uint64_t sum = isCurrent ? alerts.sums[i] : 0;
        const uint32_t threshold = limits.thresholds[i];
        Data row;
        row["name"] = kSums[i];
        row["sum"] = NumberData(sum);
        row["threshold"] = threshold == 0 ? Data("not watched") : NumberData(threshold);
        row["reached"] = threshold != 0 && sum >= threshold;
        row["below"] = threshold != 0 && sum < threshold;
        rows.push_back(row);
    }
    data["alerts"] = std::move(rows);
    data["alertsOn"] = settings.IsEnabled();
    data["windowSeconds"] = NumberData(limits.windowSeconds);
    data["hasReports"] = alerts.changed != 0;
    data["lastReport"] = TimeText(alerts.changed);
}

}  // namespace

View ShowUploads(const Request& /*request*/) {
    const TicketSettings settings(ScanIniCache(), ServerIniCache());
    const TicketThreads threads = settings.Threads();
    View view;
    constexpr const char* kUnits[] = {"agents", "agents", "agents a second", "s", "s", "s"};
    static_assert(std::size(kUnits) == static_cast<std::size_t>(TicketSetting::kCount));
    Data rows = ListData();
    for (std::size_t i = 0; i < std::size(kUnits); ++i) {
        const auto setting = static_cast<TicketSetting>(i);
        Data row;
        row["key"] = TicketSettings::Key(setting);
        row["value"] = NumberData(settings.Read(setting, threads));
        row["unit"] = kUnits[i];
        rows.push_back(row);
    }
    view.data["ticket"] = std::move(rows);
    Data tables = ListData();
    tables.push_back(Latest(
        L"firewall_log", "Latest firewall-log rows",
        {"Agent", "Time", "Local address", "Remote address", "Protocol", "Type", "Subtype", "Port", "Direction"}));
    tables.push_back(Latest(L"restore_log", "Latest restore results", {"Agent", "Log", "Received", "Type", "Result"}));
    tables.push_back(Latest(L"event", "Latest events for other services", {"Received", "Service", "Event", "Fields"}));
    view.data["tables"] = std::move(tables);
    const std::optional<LiveState> state = ReadLiveState();
    AddClients(state, view.data);
    AddAlerts(state, view.data);
    view.data["inForce"] = settings.IsInForce();
    return view;
}

}  // namespace wrb
