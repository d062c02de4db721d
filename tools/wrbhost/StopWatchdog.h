// Ends the process when an orderly stop takes too long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace wrb {

// From construction to destruction the clock runs. When it runs out, a command is stuck for good (on a reply pipe that
// nobody reads, say) and no thread of it can be ended safely: the process ends on the spot, with kExitTimedOut.
class StopWatchdog {
  public:
    explicit StopWatchdog(std::chrono::seconds limit);
    ~StopWatchdog();
    StopWatchdog(const StopWatchdog&) = delete;
    StopWatchdog& operator=(const StopWatchdog&) = delete;

  private:
    void Watch(std::chrono::seconds limit);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_finished = false;
    std::thread m_thread;
};

}  // namespace wrb
