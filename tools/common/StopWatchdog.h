// Ends the process when an orderly stop takes too long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "ConsoleQueue.h"
#include "StopEvent.h"

namespace wrb {

// The time runs from construction to destruction. When it is over, a thread is blocked (for example on a reply pipe
// that nobody reads) and cannot be ended safely: the process ends, with kExitTimedOut. `lastWords` then tells what is
// printed: the end waits 200 ms for it at most. The sender of the stop learns of it by `stop`.
class StopWatchdog {
  public:
    StopWatchdog(const StopEvent& stop, ConsoleQueue& console, std::chrono::milliseconds limit,
                 std::function<std::string()> lastWords);
    ~StopWatchdog();
    StopWatchdog(const StopWatchdog&) = delete;
    StopWatchdog& operator=(const StopWatchdog&) = delete;

  private:
    void Watch(std::chrono::milliseconds limit);
    void PrintLastWords() const noexcept;

    const StopEvent& m_stop;
    ConsoleQueue& m_console;
    const std::function<std::string()> m_lastWords;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_finished = false;
    std::thread m_thread;
};

}  // namespace wrb
