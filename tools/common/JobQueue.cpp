#include "JobQueue.h"

#include <utility>

namespace wrb {

void JobQueue::Start(unsigned workers) {
    m_threads.Start(workers, [this] { Work(); });
}

void JobQueue::Push(Job job) {
    {
        const std::lock_guard lock(m_lock);
        m_jobs.push_back(std::move(job));
    }
    m_changed.notify_one();
}

void JobQueue::Work() {
    std::unique_lock lock(m_lock);
    for (;;) {
        m_changed.wait(lock, [this] { return m_finishing || !m_jobs.empty(); });
        if (m_jobs.empty()) {
            return;
        }
        const Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        job();
        lock.lock();
    }
}

}  // namespace wrb
