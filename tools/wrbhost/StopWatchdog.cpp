#include "StopWatchdog.h"

#include <windows.h>

#include "Console.h"
#include "ExitCode.h"

namespace wrb {

StopWatchdog::StopWatchdog(std::chrono::seconds limit) : m_thread([this, limit] { Watch(limit); }) {}

StopWatchdog::~StopWatchdog() {
    {
        const std::lock_guard guard(m_mutex);
        m_finished = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void StopWatchdog::Watch(std::chrono::seconds limit) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, limit, [this] { return m_finished; })) {
        PrintErr("wrbhost: a command is still running; giving up\n");
        TerminateProcess(GetCurrentProcess(), kExitTimedOut);
    }
}

}  // namespace wrb
