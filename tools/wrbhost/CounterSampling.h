// Writes a sample of the command counters every ten seconds, on a thread of its own.
#pragma once

#include <condition_variable>
#include <mutex>

#include "WorkerThreads.h"

namespace wrb {

class CounterSampling {
  public:
    CounterSampling() = default;
    ~CounterSampling() { m_threads.Finish(m_lock, m_finishing, m_changed); }
    CounterSampling(const CounterSampling&) = delete;
    CounterSampling& operator=(const CounterSampling&) = delete;

    void Start();

  private:
    void Run() noexcept;

    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_finishing = false;
    WorkerThreads m_threads;
};

}  // namespace wrb
