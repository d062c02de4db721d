#include "Ledger.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "Store.h"
#include "Text.h"

namespace wrb::soak {
namespace {

struct Found {
    uint64_t rows = 0;
    uint64_t different = 0;
};
using FoundByUid = std::map<std::wstring, Found>;

// Records of one upload differ in their port, so that a duplicate is noticed.
constexpr char kRows[] = "SELECT UID, count(*), count(DISTINCT PORT) FROM TBL_CFW_LOG GROUP BY UID";
constexpr char kEvents[] =
    "SELECT substr(FIELDS, 1, 36) AS uid, count(*), count(DISTINCT FIELDS) FROM event "
    "WHERE NAME = 'CMDHQM_SEND_FIREWALL_LOG' GROUP BY uid";
constexpr char kRestores[] = "SELECT UID, count(*), count(DISTINCT LOGID) FROM TBL_RESTORE_LOG GROUP BY UID";
constexpr char kSpyware[] = "SELECT count(*) FROM event WHERE NAME = 'WC_SET_SPYWARE_LOG_EVENT'";

FoundByUid Find(SqlDb& db, const char* sql) {
    FoundByUid found;
    for (SqlStatement select = db.Use(sql); select.Step();) {
        found[select.Text(0)] = {static_cast<uint64_t>(select.Number(1)), static_cast<uint64_t>(select.Number(2))};
    }
    return found;
}

class Faults {
  public:
    explicit Faults(std::vector<std::string>& lines) : m_lines(lines) {}

    // Returns the rows that were found.
    uint64_t Compare(const char* what, const FoundByUid& all, const std::wstring& uid, uint64_t least, uint64_t most) {
        const auto at = all.find(uid);
        const Found found = at == all.end() ? Found{} : at->second;
        if (found.rows < least || found.rows > most || found.rows != found.different) {
            m_lines.push_back(std::string(what) + " of " + WideToUtf8(uid) + ": " + std::to_string(found.rows) +
                              " rows, " + std::to_string(found.different) + " different ones, of " +
                              std::to_string(most));
        }
        return found.rows;
    }

  private:
    std::vector<std::string>& m_lines;
};

}  // namespace

void Ledger::Answered(const Upload& upload) {
    const std::lock_guard lock(m_lock);
    (m_backEnd.Undisturbed(upload.sent) ? m_open : m_cut).push_back(upload);
}

void Ledger::RestoreAnswered(const std::wstring& uid, PresenceLog::Mark sent) {
    const std::lock_guard lock(m_lock);
    if (m_backEnd.Undisturbed(sent)) {
        m_restores.push_back(uid);
    }
}

void Ledger::SpywareAnswered(PresenceLog::Mark sent) {
    const std::lock_guard lock(m_lock);
    ++(m_backEnd.Undisturbed(sent) ? m_spyware : m_unsureSpyware);
}

// An upload is done when its package has been deleted.
void Ledger::Sort() {
    const auto done = std::partition(m_open.begin(), m_open.end(),
                                     [](const Upload& upload) { return std::filesystem::exists(upload.package); });
    m_done.insert(m_done.end(), done, m_open.end());
    m_open.erase(done, m_open.end());
}

void Ledger::BackEndLeaves(PresenceLog& backEnd) {
    const std::lock_guard lock(m_lock);
    Sort();
    m_cut.insert(m_cut.end(), m_open.begin(), m_open.end());
    m_open.clear();
    backEnd.Leaves();
}

bool Ledger::Settled() {
    const std::lock_guard lock(m_lock);
    Sort();
    return m_open.empty();
}

LedgerResult Ledger::Check(const std::wstring& database) {
    const std::lock_guard lock(m_lock);
    const auto db = OpenStore(database);
    const FoundByUid rows = Find(*db, kRows);
    const FoundByUid events = Find(*db, kEvents);
    const FoundByUid restores = Find(*db, kRestores);
    LedgerResult result;
    Faults faults(result.faults);
    for (const Upload& upload : m_open) {
        result.faults.push_back("the package of " + WideToUtf8(upload.uid) + " is still there");
    }
    for (const Upload& upload : m_done) {
        result.records += upload.records;
        result.rows += faults.Compare("log rows", rows, upload.uid, upload.records, upload.records);
        result.events += faults.Compare("events", events, upload.uid, upload.records, upload.records);
    }
    for (const Upload& upload : m_cut) {
        result.cutRecords += upload.records;
        result.cutRows += faults.Compare("log rows", rows, upload.uid, 0, upload.records);
        faults.Compare("events", events, upload.uid, 0, upload.records);
    }
    for (const std::wstring& uid : m_restores) {
        result.restoreRows += faults.Compare("restore rows", restores, uid, 1, 1);
    }
    result.uploads = m_done.size();
    result.cutUploads = m_cut.size();
    result.restores = m_restores.size();
    result.spywareEvents = m_spyware;
    result.unsureSpyware = m_unsureSpyware;
    result.spywareRows = static_cast<uint64_t>(db->NumberOf(kSpyware));
    if (result.spywareRows < m_spyware || result.spywareRows > m_spyware + m_unsureSpyware) {
        result.faults.push_back("spyware events: " + std::to_string(result.spywareRows) + " rows of " +
                                std::to_string(m_spyware));
    }
    return result;
}

}  // namespace wrb::soak
