#include "StopWatchdog.h"

#include <windows.h>

#include <utility>

#include "Console.h"
#include "ExitCode.h"

namespace wrb {

StopWatchdog::StopWatchdog(const StopEvent& stop, std::chrono::milliseconds limit,
                           std::function<std::string()> lastWords)
    : m_stop(stop), m_lastWords(std::move(lastWords)), m_thread([this, limit] { Watch(limit); }) {}

StopWatchdog::~StopWatchdog() {
    {
        const std::lock_guard guard(m_mutex);
        m_finished = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void StopWatchdog::Watch(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, limit, [this] { return m_finished; })) {
        m_stop.GiveUp();
        try {
            PrintErr(m_lastWords() + "\n");
        } catch (...) {
            // No memory for the line: the exit code tells.
        }
        TerminateProcess(GetCurrentProcess(), kExitTimedOut);
    }
}

}  // namespace wrb
