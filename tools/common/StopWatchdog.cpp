#include "StopWatchdog.h"

#include <windows.h>

#include <utility>

#include "ExitCode.h"

namespace wrb {
namespace {

constexpr std::chrono::milliseconds kLastWordsLimit{200};

}  // namespace

StopWatchdog::StopWatchdog(const StopEvent& stop, ConsoleQueue& console, std::chrono::milliseconds limit,
                           std::function<std::string()> lastWords)
    : m_stop(stop), m_console(console), m_lastWords(std::move(lastWords)), m_thread([this, limit] { Watch(limit); }) {}

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
        PrintLastWords();
        TerminateProcess(GetCurrentProcess(), kExitTimedOut);
    }
}

void StopWatchdog::PrintLastWords() const noexcept {
    try {
        m_console.Err(m_lastWords());
        m_console.Drain(kLastWordsLimit);
    } catch (...) {
        // No memory for the line: the exit code tells.
    }
}

}  // namespace wrb
