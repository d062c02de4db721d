// The records that were acknowledged to agents. At the end they must be in the database, or counted as lost.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "Presence.h"

namespace wrb {
class SqlDb;
}

namespace wrb::soak {

struct Upload {
    std::wstring uid;      // no other upload has it
    std::wstring package;  // the host deletes it after it has sent all records
    unsigned records = 0;
    Presence::Marks sent{};
};

// What makes it unsure where the records of the uploads go that are under way.
enum class Cut {
    Stop,           // the back end is away: it has stored what it accepted
    Full,           // its disk is full: what it cannot store it counts
    BackEndKilled,  // rows that it held in memory are lost, and nobody can count them
    HostKilled,     // what it has not sent stays in the packages
};

// Of what was acknowledged while nothing was disturbed, each row and event must be there once. Of the rest as many must
// be missing as the services have counted as lost.
struct LedgerResult {
    uint64_t uploads = 0;  // answered 1, nothing being disturbed from the message to the last record
    uint64_t records = 0;  // in those
    uint64_t rows = 0;     // found of those in the log pool
    uint64_t events = 0;   // found of those at the central-management agent
    uint64_t restores = 0;
    uint64_t restoreRows = 0;
    uint64_t spyware = 0;
    uint64_t spywareEvents = 0;
    uint64_t unsure = 0;              // rows and events that were acknowledged while something was disturbed
    uint64_t unsureFound = 0;         // found of those
    uint64_t counted = 0;             // rows and events that the services counted as lost
    uint64_t interrupted = 0;         // rows and events of what killed hosts had under way
    uint64_t inMemory = 0;            // rows and events that killed back ends may have held, at most
    std::vector<std::string> faults;  // one line each; empty when nothing is missing or stored twice
};

// Whether a report of that agent's restores is in the database, which may be served.
bool HasRestoreRow(const std::wstring& database, const std::wstring& uid);

// Any thread.
class Ledger {
  public:
    explicit Ledger(const Presence& presence) : m_presence(presence) {}

    void Answered(const Upload& upload);
    void RestoreAnswered(const std::wstring& uid, const Presence::Marks& sent);
    void SpywareAnswered(const Presence::Marks& sent);

    // Called when a disturbance begins. What is under way, or has ended a moment ago, counts as unsure from then on.
    void Begin(Cut cut, PresenceLog& leaves);

    // True when every upload is done.
    bool Settled();

    // Reads the database file, which no back end may have open. `counted`: rows and events that the services counted as
    // lost.
    LedgerResult Check(const std::wstring& database, uint64_t counted);

  private:
    struct Entry {
        Upload upload;
        uint64_t answered;  // on the 64-bit tick clock
    };

    bool Undisturbed(const Presence::Marks& sent) const;
    void Book(std::vector<Entry>& sure, std::vector<Entry>& unsure, const Upload& upload, uint64_t items);
    void Sort();
    void CheckUploads(LedgerResult& result, SqlDb& db) const;
    void CheckRestores(LedgerResult& result, SqlDb& db) const;
    void CheckSpyware(LedgerResult& result, SqlDb& db) const;
    void CheckMissing(LedgerResult& result) const;

    const Presence& m_presence;
    std::mutex m_lock;
    std::vector<Entry> m_open;
    std::vector<Entry> m_done;
    std::vector<Entry> m_cut;
    std::vector<Entry> m_restores;
    std::vector<Entry> m_unsureRestores;
    std::vector<Entry> m_spyware;
    std::vector<Entry> m_unsureSpyware;
    bool m_hostWasKilled = false;
    uint64_t m_interrupted = 0;
    uint64_t m_inMemory = 0;
};

}  // namespace wrb::soak
