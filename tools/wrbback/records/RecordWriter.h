// Puts records into the database, from one thread, as many in one commit as have come since the last one began: a
// single record is committed at once, a flood in large pieces.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "RecordTable.h"
#include "Store.h"

namespace wrb {

class RecordWriter {
  public:
    using Note = std::function<void(const std::wstring&)>;

    // Of each table the latest `keep` rows stay, 0: all. Throws SqlError, see Store.h.
    RecordWriter(const std::wstring& database, int64_t keep, Note note);
    ~RecordWriter() { Finish(); }
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    // From any thread. Waits while a thousand records are queued: a sender that is faster than the disk finds the pipe
    // busy, and nothing is dropped. While the database is locked, or disk or memory full, storing is tried again and
    // again.
    void Put(Record record);

    // From now on such a database is tried for one minute more: what has not been stored then is lost, and counted.
    void Hurry();

    // Stores what is queued, then ends the thread. No Put may follow.
    void Finish();

    uint64_t Stored() const { return m_stored; }
    uint64_t Lost() const { return m_lost; }

  private:
    using Batch = std::vector<Record>;
    static constexpr uint64_t kNever = ~0ull;

    void Work();
    void StoreOrLose(const Batch& batch);
    void StoreOnce(const Batch& batch);
    void NoteFailure(std::size_t rows, const wchar_t* what, const char* why) const noexcept;

    const int64_t m_keep;
    const Note m_note;
    const std::unique_ptr<SqlDb> m_db;  // of the thread
    std::mutex m_lock;
    std::condition_variable m_changed;
    Batch m_queue;
    bool m_finishing = false;
    std::atomic<uint64_t> m_giveUpAt{kNever};  // on the 64-bit tick clock
    std::atomic<uint64_t> m_stored{0};
    std::atomic<uint64_t> m_lost{0};
    std::thread m_thread;  // last: it uses the members above
};

}  // namespace wrb
