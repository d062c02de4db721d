#include "StopWatchdog.h"

#include <windows.h>

#include <future>
#include <utility>

#include "Console.h"
#include "ExitCode.h"

namespace wrb {
namespace {

constexpr std::chrono::milliseconds kLastWordsLimit{200};

}  // namespace

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
        PrintLastWords();
        TerminateProcess(GetCurrentProcess(), kExitTimedOut);
    }
}

// On a thread of its own: a write to a pipe that nobody reads does not end.
void StopWatchdog::PrintLastWords() const noexcept {
    try {
        std::packaged_task<void()> print([this] { PrintErr(m_lastWords() + "\n"); });
        const std::future<void> printed = print.get_future();
        std::thread(std::move(print)).detach();
        printed.wait_for(kLastWordsLimit);
    } catch (...) {
        // No memory or no thread for the line: the exit code tells.
    }
}

}  // namespace wrb
