#include "CommandLanes.h"

#include <algorithm>
#include <utility>

namespace wrb {

CommandLanes::CommandLanes(const LaneLimits& limits, Run run)
    : m_limits(limits), m_mostSlow(std::max(1u, limits.workers * 3 / 4)), m_run(std::move(run)) {
    LaneOf(CommandLane::Quick).most = limits.workers;
    LaneOf(CommandLane::Database).most = m_mostSlow;
    LaneOf(CommandLane::Upload).most = std::max(1u, limits.workers / 2);
}

void CommandLanes::Start() {
    m_threads.Start(m_limits.workers, [this] { Work(); });
}

// How many workers the lane's commands hold, or will when the threads have taken them.
unsigned CommandLanes::Claimed(const Lane& lane) const {
    return static_cast<unsigned>(std::min<std::size_t>(lane.running + lane.queue.size(), lane.most));
}

// How many workers the lane may hold beside what the others claim.
unsigned CommandLanes::WorkersFor(const Lane& lane) const {
    unsigned slow = 0;
    for (const Lane& other : m_lanes) {
        slow += &other != &lane && IsSlow(other) ? Claimed(other) : 0;
    }
    const unsigned all = IsSlow(lane) ? m_mostSlow : m_limits.workers;
    return std::min(lane.most, all - std::min(slow, m_mostSlow));
}

LanePut CommandLanes::Put(CommandLane lane, QueuedCommand& command) {
    LanePut put = LanePut::Runs;
    {
        const std::lock_guard lock(m_lock);
        Lane& into = LaneOf(lane);
        const std::size_t before = into.running + into.queue.size();
        const std::size_t workers = WorkersFor(into);
        if (before >= workers) {
            put = LanePut::Waits;
            if (before - workers >= m_limits.queuedPerLane) {
                return LanePut::Full;
            }
        }
        into.queue.push_back({m_next, {}});  // may throw: before the command is taken
        into.queue.back().command = std::move(command);
        ++m_next;
    }
    m_changed.notify_one();
    return put;
}

bool CommandLanes::NoneWaits() const {
    return std::ranges::all_of(m_lanes, [](const Lane& lane) { return lane.queue.empty(); });
}

void CommandLanes::WaitUntilNoneWaits(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(m_lock);
    m_taken.wait_until(lock, deadline, [this] { return NoneWaits(); });
}

std::optional<QueuedCommand> CommandLanes::TakeQueued() {
    const std::lock_guard lock(m_lock);
    for (Lane& lane : m_lanes) {
        if (!lane.queue.empty()) {
            QueuedCommand command = std::move(lane.queue.front().command);
            lane.queue.pop_front();
            return command;
        }
    }
    return std::nullopt;
}

bool CommandLanes::HasRoom(const Lane& lane) const {
    return m_running < m_limits.workers && lane.running < lane.most && (!IsSlow(lane) || m_slowRunning < m_mostSlow);
}

// The lane whose first command may run now; of several the one that came first.
CommandLanes::Lane* CommandLanes::Next() {
    Lane* next = nullptr;
    for (Lane& lane : m_lanes) {
        if (!lane.queue.empty() && HasRoom(lane) &&
            (next == nullptr || lane.queue.front().number < next->queue.front().number)) {
            next = &lane;
        }
    }
    return next;
}

void CommandLanes::Work() {
    std::unique_lock lock(m_lock);
    for (;;) {
        m_changed.wait(lock, [this] { return m_finishing || Next() != nullptr; });
        Lane* const lane = Next();
        if (lane == nullptr) {  // what is queued still waits for a place that a running command holds
            return;
        }
        QueuedCommand command = std::move(lane->queue.front().command);
        lane->queue.pop_front();
        const unsigned slow = IsSlow(*lane) ? 1 : 0;
        ++lane->running;
        ++m_running;
        m_slowRunning += slow;
        lock.unlock();
        m_taken.notify_all();
        m_run(std::move(command));
        lock.lock();
        --lane->running;
        --m_running;
        m_slowRunning -= slow;
    }
}

}  // namespace wrb
