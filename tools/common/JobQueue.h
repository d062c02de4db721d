// Worker threads that start jobs in order of arrival.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "WorkerThreads.h"

namespace wrb {

using Job = std::function<void()>;

class JobQueue {
  public:
    JobQueue() = default;
    ~JobQueue() { Finish(); }
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    void Start(unsigned workers);

    // From any thread. The job must not throw. The queue itself has no limit.
    void Push(Job job);

    // Runs the queued jobs, then ends the threads. No Push may follow.
    void Finish() { m_threads.Finish(m_lock, m_finishing, m_changed); }

  private:
    void Work();

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    bool m_finishing = false;
    WorkerThreads m_threads;
};

}  // namespace wrb
