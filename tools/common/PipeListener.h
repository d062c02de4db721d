// A named-pipe server for services that take one message a connection: a client connects, writes, and closes; all it
// wrote is the message. One thread a pipe instance, and the handler runs on that thread, so as many messages are
// handled at once as there are instances. Clients beyond that wait for a free instance.
//
// Whatever a peer does, it can cost the service no more than one instance for the read time-out and one message of the
// largest size: silent, slow, oversized and vanished peers are dropped and counted. A handler that throws is counted,
// and the service goes on.
//
// Every local account may connect, since the services run under several; remote clients are refused.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Handle.h"

namespace wrb {

class COverlappedIo;

enum class PipeDrop { Oversized, TimedOut, Broken, Stopping, HandlerThrew };

const wchar_t* PipeDropText(PipeDrop reason);

struct PipeListenerOptions {
    std::wstring name;                          // without "\\.\pipe\"
    unsigned instances = 4;                     // threads, 1 to 254
    std::size_t maxMessageBytes = 16u << 20;    // longer messages are dropped
    uint32_t readTimeoutMilliseconds = 30'000;  // from the connection to the last byte
    uint32_t drainMilliseconds = 2'000;         // how long Stop lets a message in the middle of its way come in
    uint32_t clientWaitMilliseconds = 60'000;   // how long the system lets a client wait for a free instance
    std::function<void(PipeDrop, std::size_t bytes, uint32_t clientPid)> onDrop;  // may be empty; on the pipe's thread
};

struct PipeListenerCounters {
    uint64_t accepted = 0;  // whole messages given to the handler
    uint64_t empty = 0;     // connections closed without a byte: ignored
    uint64_t dropped = 0;   // all the rest, and the messages whose handler threw
};

class CPipeListener {
  public:
    // Gets all bytes of one message. Called from several threads at once.
    using Handler = std::function<void(std::string message)>;

    CPipeListener(PipeListenerOptions options, Handler handler);
    ~CPipeListener();  // stops
    CPipeListener(const CPipeListener&) = delete;
    CPipeListener& operator=(const CPipeListener&) = delete;

    // Creates every instance and its thread. When it returns true, clients can connect. False: GetLastError tells;
    // ERROR_ALREADY_EXISTS means that another process serves the name. Called once.
    bool Start();

    // Takes no further connections, finishes those that are open (see drainMilliseconds), waits for the running
    // handlers, ends the threads. A message that came in whole is always handled. Must not be called by a handler.
    void Stop();

    PipeListenerCounters Counters() const;

  private:
    bool CreateInstances();
    void Serve(HANDLE pipe);
    bool Connect(COverlappedIo& io);
    bool Receive(COverlappedIo& io, HANDLE pipe, char* chunk, std::string& message);
    void Handle(HANDLE pipe, std::string message);
    void Drop(PipeDrop reason, HANDLE pipe, std::size_t bytes);

    const PipeListenerOptions m_options;
    const Handler m_handler;
    CKernelHandle m_stopEvent;
    std::vector<CFileHandle> m_pipes;
    std::vector<std::thread> m_threads;
    std::atomic<uint64_t> m_accepted{0};
    std::atomic<uint64_t> m_empty{0};
    std::atomic<uint64_t> m_dropped{0};
};

}  // namespace wrb
