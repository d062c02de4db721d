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

bool WriteLane::Put(const wchar_t* name, std::size_t bytes, Change change) {
    {
        const std::lock_guard guard(m_lock);
        if (m_queue.size() >= kMostQueued || bytes > kMostBytes - m_bytes) {
            return false;
        }
        m_queue.push_back({name, bytes, std::move(change)});
        m_bytes += bytes;
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
    const Clock::time_point end = Clock::now() + kLongestWait;
    while (m_done < number) {
        const Clock::time_point until = m_running != nullptr ? std::min(end, m_begun + kHeldAfter) : end;
        if (m_stuck || Clock::now() >= until) {
            return;
        }
        m_changed.wait_until(lock, until);
    }
}

Tally WriteLane::TallyOf(const std::deque<Entry>& entries) {
    Tally tally;
    for (const Entry& entry : entries) {
        ++tally[entry.name];
    }
    return tally;
}

Tally WriteLane::Waiting() const {
    const std::lock_guard guard(m_lock);
    Tally waiting = TallyOf(m_queue);
    if (m_running != nullptr) {
        ++waiting[m_running];
    }
    return waiting;
}

Tally WriteLane::Finish() {
    m_threads.Finish(m_lock, m_finishing, m_changed);
    return TallyOf(m_dropped);
}

// What the changes hold is given back now: it does not outlive the listener.
void WriteLane::DropQueue() noexcept {
    for (Entry& entry : m_queue) {
        entry.change = nullptr;
    }
    m_dropped.swap(m_queue);
}

void WriteLane::Work() {
    std::unique_lock lock(m_lock);
    for (;;) {
        m_changed.wait(lock, [this] { return m_finishing || !m_queue.empty(); });
        if (m_queue.empty()) {
            return;
        }
        Entry entry = std::move(m_queue.front());
        m_queue.pop_front();
        m_bytes -= entry.bytes;
        m_begun = Clock::now();
        m_running = entry.name;
        lock.unlock();
        m_changed.notify_all();  // there is a time from which the change counts as held
        const bool taken = entry.change();
        entry.change = nullptr;  // what it holds is given back
        lock.lock();
        m_running = nullptr;
        ++m_done;
        m_stuck = !taken && (m_stuck || Clock::now() >= m_begun + kHeldAfter);
        if (m_finishing && m_stuck) {
            DropQueue();
        }
        m_changed.notify_all();
    }
}

}  // namespace wrb
