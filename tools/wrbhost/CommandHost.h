// The command pipe and its worker threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "PipeListener.h"
#include "cmdhl.h"

namespace wrb {

struct HostCounters {
    uint64_t handled = 0;  // a handler ran
    uint64_t refused = 0;  // unknown to the library
    uint64_t threw = 0;    // an exception came out of the library
    uint64_t dropped = 0;  // messages that did not arrive completely
};

// Takes command messages, one a connection, and runs each on a worker thread. A worker survives every exception that
// leaves the library: the exception is logged with the command's name and counted.
class CommandHost {
  public:
    // `process` must stay callable until Stop has returned. There are as many pipe instances as workers; while all are
    // busy, clients wait for a free one.
    CommandHost(cmdhl_ProcessFn process, unsigned workers);

    // False: GetLastError tells; ERROR_ALREADY_EXISTS means that another process serves the pipe.
    bool Start() { return m_listener.Start(); }

    // Takes no more connections and returns when all earlier messages are done, however long a command takes.
    void Stop() { m_listener.Stop(); }

    HostCounters Counters() const;

  private:
    void Run(const std::string& message);
    void Threw(const std::wstring& message, const char* what);

    const cmdhl_ProcessFn m_process;
    std::atomic<uint64_t> m_handled{0};
    std::atomic<uint64_t> m_refused{0};
    std::atomic<uint64_t> m_threw{0};
    PipeListener m_listener;  // last: its threads use the members above
};

}  // namespace wrb
