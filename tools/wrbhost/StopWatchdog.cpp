#include "StopWatchdog.h"

#include <windows.h>

#include "Console.h"
#include "ExitCode.h"

namespace wrb {

StopWatchdog::StopWatchdog(std::chrono::milliseconds limit, HostBoard& board)
    : m_board(board), m_thread([this, limit] { Watch(limit); }) {}

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
        m_board.gaveUp = 1;
        try {
            PrintErr("wrbhost: a command is still running; giving up; " + m_board.Text() + "\n");
        } catch (...) {
            // No memory for the line: the exit code tells.
        }
        TerminateProcess(GetCurrentProcess(), kExitTimedOut);
    }
}

}  // namespace wrb
