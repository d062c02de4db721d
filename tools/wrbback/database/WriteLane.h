// The changes of the database, carried out one after the other on a thread of their own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

#include "WorkerThreads.h"

namespace wrb {

// A change that takes longer than 2.5 seconds is held: the engine waits for a lock, or does not answer. SQLite gives up
// after twice that. The lane is then stuck until the engine takes a change. While changes move on, what must see them
// or needs room for one waits for them; nobody waits for a lane that is stuck.
class WriteLane {
  public:
    static constexpr std::size_t kMostQueued = 1000;

    // False: the database has not taken the change. Must not throw.
    using Change = std::function<bool()>;

    ~WriteLane() { Finish(); }

    void Start();

    // One thread. False: kMostQueued changes wait in a lane that is stuck.
    bool Put(Change change);

    // How many changes have been put so far.
    uint64_t Number() const;

    // Any thread. Returns when that many changes have been carried out, at the latest when the lane is stuck, or
    // after ten seconds.
    void WaitFor(uint64_t number);

    // Carries out what is queued, then ends the thread. No Put may follow. When the lane is stuck meanwhile, the rest
    // is dropped. Returns how many changes were.
    uint64_t Finish();

  private:
    using Clock = std::chrono::steady_clock;

    void Work();
    template <typename Ready>
    bool WaitWhileMoving(std::unique_lock<std::mutex>& lock, const Ready& ready);

    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Change> m_queue;
    uint64_t m_put = 0;
    uint64_t m_done = 0;
    Clock::time_point m_begun{};  // the change that is carried out
    bool m_running = false;       // one is
    bool m_stuck = false;         // the last change that was held has failed, and none was taken since
    bool m_finishing = false;
    uint64_t m_dropped = 0;
    WorkerThreads m_threads;
};

}  // namespace wrb
