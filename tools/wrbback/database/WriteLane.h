// The changes of the database, carried out one after the other on a thread of their own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

#include "Tally.h"
#include "WorkerThreads.h"

namespace wrb {

// A change that takes longer than 2.5 seconds is held: the engine waits for a lock, or does not answer. SQLite gives up
// after twice that. The lane is then stuck until the engine takes a change. While changes move on, what must see them
// waits for them; nobody waits for a lane that is stuck.
class WriteLane {
  public:
    static constexpr std::size_t kMostQueued = 10'000;
    static constexpr std::size_t kMostBytes = 8u << 20;  // half of the memory that short messages have

    // False: the database has not taken the change. Must not throw.
    using Change = std::function<bool()>;

    ~WriteLane() { Finish(); }

    void Start();

    // One thread; never waits. `name` must outlive the lane; `bytes` are those of the message. False: so many changes
    // or bytes wait that there is no room.
    bool Put(const wchar_t* name, std::size_t bytes, Change change);

    // How many changes have been put so far.
    uint64_t Number() const;

    // Any thread. Returns when that many changes have been carried out, at the latest when the lane is stuck, or
    // after ten seconds.
    void WaitFor(uint64_t number);

    // The changes that have been put and have not been carried out, by name. The engine may have carried out one.
    Tally Waiting() const;

    // Carries out what is queued, then ends the thread. No Put may follow. When the lane is stuck meanwhile, the rest
    // is dropped. Returns what was.
    Tally Finish();

  private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        const wchar_t* name = nullptr;
        std::size_t bytes = 0;
        Change change;
    };

    static Tally TallyOf(const std::deque<Entry>& entries);
    void Work();
    void DropQueue() noexcept;

    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Entry> m_queue;
    std::size_t m_bytes = 0;  // of the queue
    uint64_t m_put = 0;
    uint64_t m_done = 0;
    const wchar_t* m_running = nullptr;  // the change that is carried out
    Clock::time_point m_begun{};         // and since when
    bool m_stuck = false;                // the last change that was held has failed, and none was taken since
    bool m_finishing = false;
    std::deque<Entry> m_dropped;  // without their changes
    WorkerThreads m_threads;
};

}  // namespace wrb
