#include "WriteLane.h"

#include <algorithm>
#include <utility>

namespace wrb {
namespace {

constexpr std::chrono::milliseconds kHeldAfter{2500};
constexpr std::chrono::seconds kLongestWait{10};

}  // namespace

void WriteLane::Start() {
    m_threads.Start(1, [this] { Work(); });
}

// With the lock. False: the lane is stuck, or it takes too long.
template <typename Ready>
bool WriteLane::WaitWhileMoving(std::unique_lock<std::mutex>& lock, const Ready& ready) {
    const Clock::time_point end = Clock::now() + kLongestWait;
    while (!ready()) {
        const Clock::time_point until = m_running ? std::min(end, m_begun + kHeldAfter) : end;
        if (m_stuck || Clock::now() >= until) {
            return false;
        }
        m_changed.wait_until(lock, until);
    }
    return true;
}

bool WriteLane::Put(Change change) {
    {
        std::unique_lock lock(m_lock);
        if (!WaitWhileMoving(lock, [this] { return m_queue.size() < kMostQueued; })) {
            return false;
        }
        m_queue.push_back(std::move(change));
        ++m_put;
    }
    m_changed.notify_all();
    return true;
}

uint64_t WriteLane::Number() const {
    const std::lock_guard guard(m_lock);
    return m_put;
}

void WriteLane::WaitFor(uint64_t number) {
    std::unique_lock lock(m_lock);
    WaitWhileMoving(lock, [this, number] { return m_done >= number; });
}

uint64_t WriteLane::Finish() {
    m_threads.Finish(m_lock, m_finishing, m_changed);
    return m_dropped;
}

void WriteLane::Work() {
    std::unique_lock lock(m_lock);
    for (;;) {
        m_changed.wait(lock, [this] { return m_finishing || !m_queue.empty(); });
        if (m_queue.empty()) {
            return;
        }
        Change change = std::move(m_queue.front());
        m_queue.pop_front();
        m_begun = Clock::now();
        m_running = true;
        lock.unlock();
        m_changed.notify_all();  // there is room, and a time from which the change counts as held
        const bool taken = change();
        change = nullptr;  // what it holds is given back
        lock.lock();
        m_running = false;
        ++m_done;
        m_stuck = !taken && (m_stuck || Clock::now() >= m_begun + kHeldAfter);
        if (m_finishing && m_stuck) {
            m_dropped += m_queue.size();
            m_queue.clear();
        }
        m_changed.notify_all();
    }
}

}  // namespace wrb
