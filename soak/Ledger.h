// The records that were acknowledged to agents. At the end they must be in the database.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "Services.h"

namespace wrb::soak {

struct Upload {
    std::wstring uid;      // no other upload has it
    std::wstring package;  // the host deletes it after it has sent all records
    unsigned records = 0;
    PresenceLog::Mark sent = 0;  // of the back end
};

struct LedgerResult {
    uint64_t uploads = 0;     // answered 1, the back end being up from the message to the last record
    uint64_t records = 0;     // in those
    uint64_t rows = 0;        // found of those in the log pool
    uint64_t events = 0;      // found of those at the central-management agent
    uint64_t cutUploads = 0;  // answered 1, the back end being away in between
    uint64_t cutRecords = 0;
    uint64_t cutRows = 0;
    uint64_t restores = 0;            // results of restores, answered 1, the back end being up
    uint64_t restoreRows = 0;         // found of those
    uint64_t spywareEvents = 0;       // material that was answered, the back end being up
    uint64_t spywareRows = 0;         // events that were found, the unsure ones included
    uint64_t unsureSpyware = 0;       // material that was answered, the back end being away in between
    std::vector<std::string> faults;  // one line each; empty when nothing is missing or stored twice
};

// Any thread.
class Ledger {
  public:
    explicit Ledger(const PresenceLog& backEnd) : m_backEnd(backEnd) {}

    void Answered(const Upload& upload);
    void RestoreAnswered(const std::wstring& uid, PresenceLog::Mark sent);
    void SpywareAnswered(PresenceLog::Mark sent);

    // Called just before the back end is stopped: uploads that are not done count as unsure from then on.
    void BackEndLeaves(PresenceLog& backEnd);

    // True when every upload is done.
    bool Settled();

    // Reads the database file, which no back end may have open.
    LedgerResult Check(const std::wstring& database);

  private:
    void Sort();

    const PresenceLog& m_backEnd;
    std::mutex m_lock;
    std::vector<Upload> m_open;
    std::vector<Upload> m_done;
    std::vector<Upload> m_cut;
    std::vector<std::wstring> m_restores;
    uint64_t m_spyware = 0;
    uint64_t m_unsureSpyware = 0;
};

}  // namespace wrb::soak
