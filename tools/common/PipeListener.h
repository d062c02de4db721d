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
// Memory: each instance has a buffer of 16 KiB. Messages up to that length share a quarter of the memory budget, longer
// ones the rest. While a share is used up, its messages wait in their connections; a message that waits may be
// overtaken. A failed allocation, on whichever thread, drops the message that needed it.
//
// SYSTEM, the administrators, the account of this process and the accounts that the options name may connect; remote
// clients are refused.
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
#include "MemoryBudget.h"

namespace wrb {

class AccessList;
class PipeInstance;
enum class PipeStep;

enum class PipeDrop { Oversized, TimedOut, Broken, Stopping, HandlerThrew, NoMemory };

const wchar_t* PipeDropText(PipeDrop reason);

struct PipeListenerOptions {
    std::wstring name;                          // without "\\.\pipe\"
    unsigned instances = 4;                     // 1 to 254
    std::vector<std::wstring> allowed;          // SIDs of the accounts that may connect beside those above
    std::size_t maxMessageBytes = 16u << 20;    // longer messages are dropped
    std::size_t memoryBudget = 64u << 20;       // bytes; see MemoryBudget.h
    uint32_t readTimeoutMilliseconds = 30'000;  // from the connection to the last byte
    uint32_t drainMilliseconds = 2'000;         // how long Stop waits for messages that are being received
    uint32_t clientWaitMilliseconds = 60'000;   // how long the system lets a client wait for a free instance
    // May be empty. Called on any of the threads; what it throws is lost.
    std::function<void(PipeDrop, std::size_t bytes, uint32_t clientPid)> onDrop;
};

struct PipeListenerCounters {
    uint64_t accepted = 0;  // complete messages that have been handled
    uint64_t empty = 0;     // connections closed without a byte: ignored
    uint64_t dropped = 0;   // all others, and messages whose handler threw
    uint64_t noMemory = 0;  // of the dropped: messages that an allocation failed for
};

// The client's process, while its connection is open.
class PipePeer {
  public:
    explicit PipePeer(PipeInstance& instance) : m_instance(&instance) {}
    uint32_t Pid() const;  // 0 when the system does not know it

    // What the message holds of the memory budget. It is given back when the connection is done; who keeps the message
    // for longer takes it along.
    MemoryShare TakeMemory() const;

  private:
    PipeInstance* m_instance;
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
    // Must not be called by a handler. The second form overrides drainMilliseconds.
    void Stop() { Stop(m_options.drainMilliseconds); }
    void Stop(uint32_t drainMilliseconds);

    PipeListenerCounters Counters() const;

  private:
    DWORD TryCreateInstances() noexcept;  // 0 or the system error
    DWORD CreateInstances();
    FileHandle CreateInstance(DWORD count, bool first, AccessList& access) const;
    void Run(std::promise<DWORD>& created);
    DWORD NextDeadline() const;  // in milliseconds from now
    void OnPacket(PipeInstance& instance, bool ours, DWORD bytes, DWORD error);
    void OnRoom();
    void OnExpired(PipeInstance& instance);
    void OnStop();
    void ConnectLastClients();
    void CancelConnects();
    void Arm(PipeInstance& instance);
    void Connected(PipeInstance& instance);
    void ReadOn(PipeInstance& instance);
    PipeStep ReadAll(PipeInstance& instance);
    void OnRead(PipeInstance& instance, DWORD bytes, DWORD error);
    void Complete(PipeInstance& instance);
    void RunJob(PipeInstance& instance, const Job& job) noexcept;
    void Post(DWORD kind, PipeInstance* instance) noexcept;
    void Drop(PipeDrop reason, PipeInstance& instance) noexcept;
    void DropByException(PipeInstance& instance) noexcept;
    void DropAndRecycle(PipeDrop reason, PipeInstance& instance);
    void Recycle(PipeInstance& instance);
    void Close(PipeInstance& instance);

    const PipeListenerOptions m_options;
    const InOrder m_inOrder;
    const std::wstring m_path;
    KernelHandle m_port;
    MessageBudgets m_memory;  // outlives the instances
    std::vector<std::unique_ptr<PipeInstance>> m_instances;
    std::thread m_thread;
    JobQueue m_jobs;

    // Of the reading thread only.
    bool m_stopping = false;
    uint32_t m_drainMilliseconds = m_options.drainMilliseconds;
    unsigned m_lastClients = 0;  // our own clients, which end the waiting of instances and send nothing
    std::size_t m_open = 0;      // instances that are not closed

    std::atomic<uint64_t> m_accepted{0};
    std::atomic<uint64_t> m_empty{0};
    std::atomic<uint64_t> m_dropped{0};
    std::atomic<uint64_t> m_noMemory{0};
};

}  // namespace wrb
