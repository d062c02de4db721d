// One instance of a listener's pipe: its handle, the one pending operation, and the message so far.
// Belongs to the listener's reading thread; while it is Handling, a worker owns the message.
//
// Must not be destroyed with a pending operation: the listener cancels it and waits for the packet first.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

#include "Handle.h"
#include "MemoryBudget.h"

namespace wrb {

enum class PipeState {
    Closed,      // takes no client
    Resting,     // connecting failed; retried at the deadline
    Connecting,  // waits for a client
    Reading,     // has a client that is still connected
    Waiting,     // has a client, and no memory to read on or to hand the message over
    Handling,    // a worker has its complete message
};

// Pending: a packet will follow. Taken: data arrived, call again. Ready: done. NoRoom: the memory budget is used up.
// Failed: GetLastError tells.
enum class PipeStep { Pending, Taken, Ready, NoRoom, Failed };

class PipeInstance {
  public:
    static constexpr ULONGLONG kNever = ~0ull;

    // Each instance has a buffer of this size. A message that exceeds it takes memory while it grows, a shorter one
    // when it is complete.
    static constexpr std::size_t kOwnBytes = 16 * 1024;

    // The pipe is overlapped and reads bytes; it must be on a completion port that gets no packet for operations that
    // complete at once.
    PipeInstance(FileHandle pipe, MessageBudgets& budgets)
        : m_pipe(std::move(pipe)), m_budgets(budgets), m_memory(budgets.longOnes) {}

    HANDLE Pipe() const { return m_pipe.Get(); }

    PipeStep Connect();  // Ready: a client is already connected

    // Reads the available data. Ready: the writer has closed its end and everything is read. Data that is already there
    // is Taken without a packet: a packet could arrive too late (see PipeListener.cpp). Throws std::bad_alloc.
    PipeStep Read(std::size_t maxMessageBytes);

    // The read's packet reports `bytes`.
    void Took(DWORD bytes) { m_filled += bytes; }

    // The packet still follows, with ERROR_OPERATION_ABORTED or with the result.
    void Cancel() { CancelIoEx(m_pipe.Get(), &m_operation); }

    void Disconnect() { DisconnectNamedPipe(m_pipe.Get()); }
    void Close();

    // Counts the complete message. False: there is no room for it now.
    bool CountMessage();

    std::string TakeMessage();
    std::size_t Filled() const { return m_filled; }

    // What the message holds of the budget: until the next client comes, unless it is taken away.
    MemoryShare TakeMemory() { return std::move(m_memory); }

    PipeState state = PipeState::Closed;
    ULONGLONG deadline = kNever;  // of a resting, reading or waiting instance, on the 64-bit tick clock
    bool expired = false;         // the read was cancelled at the deadline

  private:
    void Reset();
    bool MakeRoom(std::size_t most);

    FileHandle m_pipe;
    MessageBudgets& m_budgets;
    OVERLAPPED m_operation{};
    std::string m_message;  // m_filled bytes are received; the rest is room for reads
    std::size_t m_filled = 0;
    MemoryShare m_memory;
};

}  // namespace wrb
