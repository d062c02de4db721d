// Notices that the database server ends and comes back.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

#include "WorkerThreads.h"

namespace wrb {

// Looks every two seconds whether somebody has the database server's pipe. It tells of a server that was missing twice
// in a row, once, and of its return.
class BackEndWatch {
  public:
    // Both are called on the watch's thread and must not throw. `seconds`: how long it was missing.
    struct Listener {
        std::function<void()> lost;
        std::function<void(unsigned seconds)> found;
    };

    explicit BackEndWatch(Listener listener) : m_listener(std::move(listener)) {}
    ~BackEndWatch() { Stop(); }
    BackEndWatch(const BackEndWatch&) = delete;
    BackEndWatch& operator=(const BackEndWatch&) = delete;

    void Start();
    void Stop() { m_threads.Finish(m_lock, m_finishing, m_changed); }

  private:
    void Run() noexcept;
    void Look();

    const Listener m_listener;
    uint64_t m_missingSince = 0;  // on the 64-bit tick clock; 0: it is there
    bool m_told = false;          // of the loss
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_finishing = false;
    WorkerThreads m_threads;
};

}  // namespace wrb
