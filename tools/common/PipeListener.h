// A named-pipe server for services that take one message a connection: a client connects, writes, and closes; the
// message is everything that it wrote.
//
// One thread accepts and reads; handlers run on worker threads. Each pipe instance holds one message from the
// connection until its handler is done, so `instances` bounds the messages in flight, and further clients wait for a
// free instance. Messages complete in causal order: when a client connects after another connection was closed, its
// message follows the other one's. A service in which a query must not overtake an earlier change uses the form with
// InOrder.
//
// A peer can occupy at most one instance for the read time-out and one message of the largest size: silent, slow,
// oversized and disconnected peers are dropped and counted. A handler that throws is counted, and the service
// continues.
//
// Every local account may connect, since the services run under several; remote clients are refused.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Handle.h"
#include "JobQueue.h"

namespace wrb {

class PipeInstance;

enum class PipeDrop { Oversized, TimedOut, Broken, Stopping, HandlerThrew };

const wchar_t* PipeDropText(PipeDrop reason);

struct PipeListenerOptions {
    std::wstring name;                          // without "\\.\pipe\"
    unsigned instances = 4;                     // 1 to 254
    std::size_t maxMessageBytes = 16u << 20;    // longer messages are dropped
    uint32_t readTimeoutMilliseconds = 30'000;  // from the connection to the last byte
    uint32_t drainMilliseconds = 2'000;         // how long Stop waits for messages that are being received
    uint32_t clientWaitMilliseconds = 60'000;   // how long the system lets a client wait for a free instance
    std::function<void(PipeDrop, std::size_t bytes, uint32_t clientPid)> onDrop;  // may be empty; on any of the threads
};

struct PipeListenerCounters {
    uint64_t accepted = 0;  // complete messages that have been handled
    uint64_t empty = 0;     // connections closed without a byte: ignored
    uint64_t dropped = 0;   // all others, and messages whose handler threw
};

// The client's process, while its connection is open.
class PipePeer {
  public:
    explicit PipePeer(HANDLE pipe) : m_pipe(pipe) {}
    uint32_t Pid() const;  // 0 when the system does not know it

  private:
    HANDLE m_pipe;
};

class PipeListener {
  public:
    // Gets all bytes of one message. Called from several threads at once.
    using Handler = std::function<void(std::string message)>;

    // The form for services that need the order: `accept` is called for one message at a time, in order, on the reading
    // thread, so it must not block for long. It returns a job for slow work whose order does not matter, which runs on
    // a worker; an empty job: done.
    struct InOrder {
        unsigned workers = 0;  // 0: accept never returns a job
        std::function<Job(std::string message, const PipePeer& peer)> accept;
    };

    PipeListener(const PipeListenerOptions& options, Handler handler);  // as many workers as instances
    PipeListener(PipeListenerOptions options, InOrder inOrder);
    ~PipeListener();  // stops
    PipeListener(const PipeListener&) = delete;
    PipeListener& operator=(const PipeListener&) = delete;

    // Creates the threads and every instance. When it returns true, clients can connect. False: GetLastError tells;
    // ERROR_ALREADY_EXISTS means that another process serves the name. Called once.
    bool Start();

    // Takes no further connections, finishes those that are open (see drainMilliseconds), waits for the running
    // handlers, ends the threads. A message whose sender could write it and close is always handled.
    // Must not be called by a handler.
    void Stop();

    PipeListenerCounters Counters() const;

  private:
    DWORD CreateInstances();  // 0 or the system error
    FileHandle CreateInstance(DWORD count, bool first, SECURITY_ATTRIBUTES& access) const;
    void Run(std::promise<DWORD>& created);
    DWORD NextDeadline() const;  // in milliseconds from now
    void OnPacket(PipeInstance& instance, bool ours, DWORD bytes, DWORD error);
    void OnExpired(PipeInstance& instance);
    void OnStop();
    void ConnectLastClients();
    void CancelConnects();
    void Arm(PipeInstance& instance);
    void Connected(PipeInstance& instance);
    void ReadOn(PipeInstance& instance);
    void OnRead(PipeInstance& instance, DWORD bytes, DWORD error);
    void Complete(PipeInstance& instance);
    void RunJob(PipeInstance& instance, const Job& job);
    void Drop(PipeDrop reason, const PipeInstance& instance);
    void DropAndRecycle(PipeDrop reason, PipeInstance& instance);
    void Recycle(PipeInstance& instance);
    void Close(PipeInstance& instance);

    const PipeListenerOptions m_options;
    const InOrder m_inOrder;
    KernelHandle m_port;
    std::vector<std::unique_ptr<PipeInstance>> m_instances;
    std::thread m_thread;
    JobQueue m_jobs;

    // Of the reading thread only.
    bool m_stopping = false;
    unsigned m_lastClients = 0;  // our own clients, which end the waiting of instances and send nothing
    std::size_t m_open = 0;      // instances that are not closed

    std::atomic<uint64_t> m_accepted{0};
    std::atomic<uint64_t> m_empty{0};
    std::atomic<uint64_t> m_dropped{0};
};

}  // namespace wrb
