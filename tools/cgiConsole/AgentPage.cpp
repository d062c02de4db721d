#include "Bundles.h"
#include "Listing.h"
#include "Pages.h"
#include "ScanGroup.h"
#include "SectionView.h"

namespace wrb {
namespace {

// Columns of the table "agent".
enum AgentColumn : std::size_t {
    Uid,
    Computer,
    Ip,
    Domain,
    Version,
    Changed,
    Scans,
    DomainPath,
    Platform,
    Architecture,
    Status1,
    Status2,
    ScanMethod,
    OppStatus,
    OppEnd,
    FirewallPolicy,
    FirewallCount1,
    FirewallTime = FirewallCount1 + 6,
};

bool ReadAgent(const std::wstring& uid, DbListing& agent) {
    return ReadDbListing({.table = L"agent", .search = uid, .rows = 1}, agent);
}

Data Fact(const char* name, Data value) {
    Data fact;
    fact["name"] = name;
    fact["value"] = std::move(value);
    return fact;
}

Data Facts(const DbListing& agent) {
    constexpr struct {
        const char* name;
        AgentColumn column;
    } kFacts[] = {
        {"Identifier", Uid},
        {"Address", Ip},
        {"Domain", Domain},
        {"Domain path", DomainPath},
        {"Program version", Version},
        {"Platform number", Platform},
        {"Architecture number", Architecture},
        {"Status word 1", Status1},
        {"Status word 2", Status2},
        {"Scan method", ScanMethod},
        {"Firewall policy", FirewallPolicy},
    };
    Data facts = ListData();
    for (const auto& [name, column] : kFacts) {
        const std::wstring& text = agent.Cell(0, column);
        facts.push_back(Fact(name, TextData(text.empty() ? L"none" : text)));
    }
    const bool isOutbreak = agent.Cell(0, OppStatus) == L"1";
    const int64_t end = ParseInt64(agent.Cell(0, OppEnd));
    facts.push_back(Fact("Outbreak prevention", !isOutbreak ? "off" : end == 0 ? "on" : "on until " + TimeText(end)));
    return facts;
}

// What the agent has not fetched since it was changed.
Data ChangedGroups(uint32_t bits) {
    Data names = ListData();
    uint32_t known = 0;
    const auto add = [&](uint32_t bit, std::wstring_view name) {
        if ((bits & bit) != 0) {
            names.push_back(TextData(name));
        }
        known |= bit;
    };
    for (const ScanGroup& group : kScanGroups) {
        add(group.configFlag, group.section);
    }
    add(kBundle<WtpValues>.configBit, kBundle<WtpValues>.section);
    add(kBundle<FARestoreValues>.configBit, kBundle<FARestoreValues>.section);
    if ((bits & ~known) != 0) {
        names.push_back(TextData(FormatWide(L"bits of other servers: 0x%08X", bits & ~known)));
    }
    return names;
}

void AddFirewall(const DbListing& agent, Data& data) {
    Data counts = ListData();
    for (std::size_t i = 0; i < 6; ++i) {
        Data row;
        row["number"] = NumberData(i + 1);
        row["count"] = TextData(agent.Cell(0, FirewallCount1 + i));
        counts.push_back(row);
    }
    data["firewall"] = std::move(counts);
    const int64_t reported = ParseInt64(agent.Cell(0, FirewallTime));
    data["hasFirewall"] = reported > 0;
    data["firewallTime"] = TimeText(reported);
}

void AddSessions(const std::wstring& uid, Data& data) {
    DbListing sessions;
    Data rows = ListData();
    if (ReadDbListing({.table = L"restore_session", .search = uid, .rows = 100}, sessions)) {
        for (const std::wstring& session : sessions.cells) {
            rows.push_back(TextData(session));
        }
    }
    data["hasSessions"] = !rows.is_empty_list();
    data["sessions"] = std::move(rows);
}

}  // namespace

View ShowAgent(const Request& request) {
    const std::wstring uid = request.Text(L"uid");
    DbListing agent;
    if (!ReadAgent(uid, agent)) {
        return Refusal("503 Service Unavailable", L"The database server does not answer.");
    }
    if (agent.Rows() == 0) {
        return Refusal("404 Not Found", L"The store has no such agent: " + uid);
    }
    const auto changed = static_cast<uint32_t>(ParseInt64(agent.Cell(0, Changed)));
    View view;
    view.data["found"] = true;
    view.data["uid"] = TextData(agent.Cell(0, Uid));
    view.data["uidUrl"] = UrlText(agent.Cell(0, Uid));
    view.data["computer"] =
        TextData(agent.Cell(0, Computer).empty() ? L"Agent without a name" : agent.Cell(0, Computer));
    view.data["facts"] = Facts(agent);
    view.data["hasConfiguration"] = agent.Cell(0, Scans) != L"0";
    view.data["isChanged"] = changed != 0;
    view.data["changed"] = ChangedGroups(changed);
    AddFirewall(agent, view.data);
    AddSessions(uid, view.data);
    AddDifferences(uid, request.Text(L"with"), view.data);
    AddSectionLines(uid, request.Text(L"section"), view.data);
    return view;
}

}  // namespace wrb
