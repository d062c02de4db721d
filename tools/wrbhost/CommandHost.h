// The command pipe, the lanes in which its commands wait, and the worker threads.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "CommandLanes.h"
#include "ConsoleQueue.h"
#include "HostBoard.h"
#include "PipeListener.h"
#include "Sideline.h"
#include "cmdhl.h"

namespace wrb {

struct CommandHostOptions {
    LaneLimits lanes;
    unsigned connections = 128;            // pipe instances: connections that are read at once
    std::size_t memoryBudget = 64u << 20;  // see PipeListener.h
    std::vector<std::wstring> allowed;     // SIDs; see PipeListener.h
};

// Takes command messages, one a connection. The reading thread puts each into its lane and is done with the connection;
// a worker runs it. A command whose lane is full is turned away: its sender gets the answer that failure has, at once.
//
// Whatever comes out of the library, a worker survives: the exception is logged with the command's name and counted.
class CommandHost {
  public:
    // `process`, `board` and `console` must live until Stop has returned.
    CommandHost(cmdhl_ProcessFn process, const CommandHostOptions& options, HostBoard& board, ConsoleQueue& console);
    ~CommandHost();
    CommandHost(const CommandHost&) = delete;
    CommandHost& operator=(const CommandHost&) = delete;

    // False: GetLastError tells; ERROR_ALREADY_EXISTS means that somebody else serves the pipe.
    bool Start();

    // Takes no more connections, runs what waits for a worker for up to half of `limit`, turns the rest away, and
    // returns when the running commands are done, however long they take. At most once.
    void Stop(std::chrono::milliseconds limit);

  private:
    Job Accept(std::string message, const PipePeer& peer);
    void Run(QueuedCommand command) noexcept;
    void Call(std::string message);
    void TurnAway(const std::string& message) noexcept;
    void OnDrop(PipeDrop reason, std::size_t bytes, uint32_t clientPid);
    void Warn(const std::wstring& text);
    void WarnAside(std::wstring text);
    void WarnOfThrow(const std::wstring& message, const char* what) noexcept;
    PipeListenerOptions ListenerOptions(const CommandHostOptions& options);

    const cmdhl_ProcessFn m_process;
    HostBoard& m_board;
    ConsoleQueue& m_console;
    std::atomic<uint64_t> m_lastFullNote{0};  // on the 64-bit tick clock
    Sideline m_sideline;
    PipeListener m_listener;
    CommandLanes m_lanes;  // after the listener, whose memory budget the queued commands hold
    bool m_stopped = false;
};

}  // namespace wrb
