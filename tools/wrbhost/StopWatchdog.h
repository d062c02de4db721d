// Ends the process when an orderly stop takes too long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "HostBoard.h"

namespace wrb {

// The time runs from construction to destruction. When it is over, a command is blocked (for example on a reply pipe
// that nobody reads) and its thread cannot be ended safely: the process ends at once, with kExitTimedOut.
class StopWatchdog {
  public:
    StopWatchdog(std::chrono::milliseconds limit, HostBoard& board);
    ~StopWatchdog();
    StopWatchdog(const StopWatchdog&) = delete;
    StopWatchdog& operator=(const StopWatchdog&) = delete;

  private:
    void Watch(std::chrono::milliseconds limit);

    HostBoard& m_board;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_finished = false;
    std::thread m_thread;
};

}  // namespace wrb
