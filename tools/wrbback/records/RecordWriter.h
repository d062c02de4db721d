// Puts records into the database, from one thread, as many in one commit as have come since the last one began: a
// single record is committed at once, a flood in large pieces.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "LossCount.h"
#include "RecordTable.h"
#include "StorePool.h"
#include "Tally.h"

namespace wrb {

class RecordWriter {
  public:
    using Note = std::function<void(const std::wstring&)>;

    struct Options {
        std::wstring database;  // its address, see SqlAddress.h
        int64_t keep = 0;       // the latest rows of each table that stay; 0: all
        Note note;              // what passes by itself
        Note alarm;             // rows that are refused or lost; called from any thread
    };

    explicit RecordWriter(Options options);  // throws SqlError, see Store.h
    ~RecordWriter() { Finish(); }
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    // From any thread. At most 500 records wait: while so many do, this waits too, and the senders find the pipe busy.
    // False: the record is refused and counted as lost. Records are refused from the moment when the disk is full, or
    // has had this wait for ten seconds, until the database takes records again. A record that is taken is tried again
    // and again while the database is locked or away, or disk or memory full. When the database refuses a row for
    // another reason, only that row is lost. A record may be stored twice when a server goes during the commit.
    bool Put(Record record);

    // From now on such a database is tried for one minute more: what has not been stored then is lost, and counted.
    void Hurry();

    // Stores what is queued, then ends the thread, and tells the refused rows that have not been told. No Put may
    // follow.
    void Finish();

    // What has been taken and is not known to be stored, by table; the database may have stored rows that it holds. And
    // the refused rows that have not been told: they count as told now. For a stop that cannot wait for Finish.
    Tally Waiting();

    uint64_t Stored() const { return m_stored; }
    uint64_t Lost() const { return m_lost; }

  private:
    using Batch = std::vector<Record>;
    static constexpr uint64_t kNever = ~0ull;

    void Work();
    void StoreOrLose(const Batch& batch);
    bool Store(std::span<const Record> rows, std::wstring& why);
    void StoreOnce(SqlDb& db, std::span<const Record> rows) const;
    void RefuseFromNowOn(const std::exception& error);
    void TakeAgain() noexcept;
    void TellRefused(uint64_t rows) noexcept;

    const Options m_options;
    StorePool m_store;  // one connection, of the thread
    std::mutex m_lock;
    std::condition_variable m_changed;
    Batch m_queue;
    std::span<const Record> m_underWay;  // rows that the thread is storing
    bool m_finishing = false;
    bool m_refusing = false;
    std::wstring m_why;  // records are refused, or were the last time
    LossCount m_refused;
    std::atomic<uint64_t> m_giveUpAt{kNever};  // on the 64-bit tick clock
    std::atomic<uint64_t> m_stored{0};
    std::atomic<uint64_t> m_lost{0};
    std::thread m_thread;  // last: it uses the members above
};

}  // namespace wrb
