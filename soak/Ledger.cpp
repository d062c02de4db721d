#include "Ledger.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <numeric>

#include "Store.h"
#include "Text.h"

namespace wrb::soak {
namespace {

constexpr uint64_t kRecentMilliseconds = 15'000;  // longer than rows wait anywhere
// What a back end may hold: a transaction, the rows that wait, and one for each connection of three pipes.
constexpr uint64_t kRowsInMemory = 500 + 500 + 3 * 64;

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

// Appends the entries of `from` that fit to `to`, and takes them out.
template <typename Entries, typename Fits>
void Move(Entries& from, Entries& to, const Fits& fits) {
    const auto first = std::partition(from.begin(), from.end(), [&](const auto& entry) { return !fits(entry); });
    to.insert(to.end(), std::make_move_iterator(first), std::make_move_iterator(from.end()));
    from.erase(first, from.end());
}

template <typename Entries>
uint64_t Records(const Entries& entries) {
    return std::accumulate(entries.begin(), entries.end(), uint64_t{0},
                           [](uint64_t sum, const auto& entry) { return sum + entry.upload.records; });
}

}  // namespace

bool HasRestoreRow(const std::wstring& database, const std::wstring& uid) {
    const auto db = OpenStore(database);
    SqlStatement select = db->Use("SELECT 1 FROM TBL_RESTORE_LOG WHERE UID = :uid");
    select.Bind(":uid", uid);
    return select.Step();
}

bool Ledger::Undisturbed(const Presence::Marks& sent) const {
    return m_presence.HostStayed(sent) && m_presence.StoreStayed(sent);
}

void Ledger::Answered(const Upload& upload) {
    const std::lock_guard lock(m_lock);
    Book(m_open, m_cut, upload, 2ull * upload.records);
}

void Ledger::RestoreAnswered(const std::wstring& uid, const Presence::Marks& sent) {
    const std::lock_guard lock(m_lock);
    Book(m_restores, m_unsureRestores, {uid, {}, 0, sent}, 1);
}

void Ledger::SpywareAnswered(const Presence::Marks& sent) {
    const std::lock_guard lock(m_lock);
    Book(m_spyware, m_unsureSpyware, {{}, {}, 0, sent}, 1);
}

// The host may have been killed after it answered.
void Ledger::Book(std::vector<Entry>& sure, std::vector<Entry>& unsure, const Upload& upload, uint64_t items) {
    const bool undisturbed = Undisturbed(upload.sent);
    (undisturbed ? sure : unsure).push_back({upload, GetTickCount64()});
    m_interrupted += m_hostWasKilled && !m_presence.HostStayed(upload.sent) ? items : 0;
}

// An upload is done when its package has been deleted: the host has sent all of it.
void Ledger::Sort() {
    Move(m_open, m_done, [](const Entry& entry) { return !std::filesystem::exists(entry.upload.package); });
}

void Ledger::Begin(Cut cut, PresenceLog& leaves) {
    const std::lock_guard lock(m_lock);
    leaves.Leaves();
    Sort();
    const std::size_t othersBefore = m_unsureRestores.size() + m_unsureSpyware.size();
    std::vector<Entry> unsure;
    m_open.swap(unsure);
    const auto isRecent = [now = GetTickCount64()](const Entry& entry) {
        return now - entry.answered < kRecentMilliseconds;
    };
    if (cut == Cut::Full || cut == Cut::BackEndKilled) {
        Move(m_done, unsure, isRecent);
        Move(m_restores, m_unsureRestores, isRecent);
    }
    if (cut != Cut::Stop) {
        Move(m_spyware, m_unsureSpyware, isRecent);
    }
    if (cut == Cut::HostKilled) {
        m_hostWasKilled = true;
        m_interrupted += 2 * Records(unsure) + m_unsureRestores.size() + m_unsureSpyware.size() - othersBefore;
    }
    m_inMemory += cut == Cut::BackEndKilled ? kRowsInMemory : 0;
    Move(unsure, m_cut, [](const Entry&) { return true; });
}

bool Ledger::Settled() {
    const std::lock_guard lock(m_lock);
    Sort();
    return m_open.empty();
}

LedgerResult Ledger::Check(const std::wstring& database, uint64_t counted) {
    const std::lock_guard lock(m_lock);
    LedgerResult result;
    result.counted = counted;
    const auto db = OpenStore(database);
    CheckUploads(result, *db);
    CheckRestores(result, *db);
    CheckSpyware(result, *db);
    CheckMissing(result);
    return result;
}

// A record of an upload is a row and an event.
void Ledger::CheckUploads(LedgerResult& result, SqlDb& db) const {
    const FoundByUid rows = Find(db, kRows);
    const FoundByUid events = Find(db, kEvents);
    Faults faults(result.faults);
    for (const auto& [upload, answered] : m_open) {
        result.faults.push_back("the package of " + WideToUtf8(upload.uid) + " is still there");
    }
    for (const auto& [upload, answered] : m_done) {
        result.rows += faults.Compare("log rows", rows, upload.uid, upload.records, upload.records);
        result.events += faults.Compare("events", events, upload.uid, upload.records, upload.records);
    }
    for (const auto& [upload, answered] : m_cut) {
        result.unsureFound += faults.Compare("log rows", rows, upload.uid, 0, upload.records);
        result.unsureFound += faults.Compare("events", events, upload.uid, 0, upload.records);
    }
    result.uploads = m_done.size();
    result.records = Records(m_done);
    result.unsure += 2 * Records(m_cut);
}

void Ledger::CheckRestores(LedgerResult& result, SqlDb& db) const {
    const FoundByUid rows = Find(db, kRestores);
    Faults faults(result.faults);
    for (const auto& [restore, answered] : m_restores) {
        result.restoreRows += faults.Compare("restore rows", rows, restore.uid, 1, 1);
    }
    for (const auto& [restore, answered] : m_unsureRestores) {
        result.unsureFound += faults.Compare("restore rows", rows, restore.uid, 0, 1);
    }
    result.restores = m_restores.size();
    result.unsure += m_unsureRestores.size();
}

// Its events name no agent: the unsure ones are those beyond the others.
void Ledger::CheckSpyware(LedgerResult& result, SqlDb& db) const {
    const auto found = static_cast<uint64_t>(db.NumberOf(kSpyware));
    result.spyware = m_spyware.size();
    result.spywareEvents = std::min(found, result.spyware);
    result.unsure += m_unsureSpyware.size();
    result.unsureFound += found - result.spywareEvents;
    if (found < result.spyware || found > result.spyware + m_unsureSpyware.size()) {
        result.faults.push_back("spyware events: " + std::to_string(found) + " of " + std::to_string(result.spyware));
    }
}

// A killed host may have counted losses of uploads that it had not answered yet.
void Ledger::CheckMissing(LedgerResult& result) const {
    result.interrupted = m_interrupted;
    result.inMemory = m_inMemory;
    const uint64_t missing = result.unsure - std::min(result.unsure, result.unsureFound);
    const bool tooMany = missing > result.counted + m_interrupted + m_inMemory;
    const bool tooFew = missing < result.counted && !m_hostWasKilled;
    if (tooMany || tooFew) {
        result.faults.push_back("of acknowledged rows and events " + std::to_string(missing) + " are missing, " +
                                std::to_string(result.counted) + " are counted");
    }
}

}  // namespace wrb::soak
