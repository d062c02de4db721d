// The worker threads and the queues before them: one queue for each lane of commands, with a bound.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "CommandCatalog.h"
#include "MemoryBudget.h"
#include "WorkerThreads.h"

namespace wrb {

struct QueuedCommand {
    std::string message;
    MemoryShare memory;  // what the message holds of the listener's budget
};

enum class LanePut {
    Runs,   // a worker is free
    Waits,  // no worker is free
    Full,   // as many wait as may
};

struct LaneLimits {
    unsigned workers = 20;             // threads
    std::size_t queuedPerLane = 1000;  // commands that wait for a worker, in each lane
};

// Uploads hold at most half of the workers, uploads and database commands together at most three quarters (one worker
// at least), so that with two workers or more a quick command always finds one. Of the commands whose lane has room,
// the oldest goes first.
class CommandLanes {
  public:
    using Run = std::function<void(QueuedCommand command)>;  // must not throw

    CommandLanes(const LaneLimits& limits, Run run);
    ~CommandLanes() { Finish(); }
    CommandLanes(const CommandLanes&) = delete;
    CommandLanes& operator=(const CommandLanes&) = delete;

    void Start();

    // From any thread. Unless the lane is full, `command` is moved from. Throws std::bad_alloc.
    LanePut Put(CommandLane lane, QueuedCommand& command);

    // Returns when no command waits for a worker, or at the deadline.
    void WaitUntilNoneWaits(std::chrono::steady_clock::time_point deadline);

    // Takes one command out that waits for a worker.
    std::optional<QueuedCommand> TakeQueued();

    // Runs what is queued, then ends the threads. No Put may follow.
    void Finish() { m_threads.Finish(m_lock, m_finishing, m_changed); }

  private:
    static constexpr std::size_t kLanes = 3;

    struct Entry {
        uint64_t number;  // in the order of arrival
        QueuedCommand command;
    };
    struct Lane {
        std::deque<Entry> queue;
        unsigned running = 0;
        unsigned most = 0;
    };

    void Work();
    Lane* Next();
    bool NoneWaits() const;
    bool HasRoom(const Lane& lane) const;
    unsigned Claimed(const Lane& lane) const;
    unsigned WorkersFor(const Lane& lane) const;
    bool IsSlow(const Lane& lane) const { return &lane != &LaneOf(CommandLane::Quick); }
    Lane& LaneOf(CommandLane lane) { return m_lanes[static_cast<std::size_t>(lane)]; }
    const Lane& LaneOf(CommandLane lane) const { return m_lanes[static_cast<std::size_t>(lane)]; }

    const LaneLimits m_limits;
    const unsigned m_mostSlow;
    const Run m_run;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::condition_variable m_taken;  // a command has left its queue
    std::array<Lane, kLanes> m_lanes;
    unsigned m_running = 0;  // of all lanes
    unsigned m_slowRunning = 0;
    uint64_t m_next = 0;
    bool m_finishing = false;
    WorkerThreads m_threads;
};

}  // namespace wrb
