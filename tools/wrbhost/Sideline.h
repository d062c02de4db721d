// A thread for what must not hold up the reading thread: refusals, warnings.
#pragma once

#include <atomic>
#include <cstddef>

#include "JobQueue.h"

namespace wrb {

class Sideline {
  public:
    static constexpr std::size_t kMostQueued = 256;

    void Start() { m_jobs.Start(1); }

    // From any thread; never waits. The job's exceptions are dropped. False: the queue is full, or there is no memory
    // for the job.
    bool Put(Job job) noexcept;

    // Runs what is queued, then ends the thread. No Put may follow.
    void Finish() { m_jobs.Finish(); }

  private:
    std::atomic<std::size_t> m_queued{0};
    JobQueue m_jobs;  // last: its thread uses the count
};

}  // namespace wrb
