// One instance of a listener's pipe: its handle, the one operation that may be under way, and the message so far.
// Belongs to the listener's reading thread; while it is Handling, `message` is gone and nobody touches it.
//
// Not destroyed with an operation under way: the listener cancels and waits for the packet first.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

#include "Handle.h"

namespace wrb {

enum class PipeState {
    Closed,      // takes no client
    Resting,     // connecting failed; tried again at the deadline
    Connecting,  // waits for a client
    Reading,     // has a client that has not closed its end
    Handling,    // has a whole message, and a worker has it
};

// Pending: a packet will tell. Taken: something has come, ask again. Ready: done. Failed: GetLastError tells.
enum class PipeStep { Pending, Taken, Ready, Failed };

class PipeInstance {
  public:
    static constexpr ULONGLONG kNever = ~0ull;

    // The pipe is overlapped and reads bytes; it must be on a completion port that gets no packet for what is done at
    // once.
    explicit PipeInstance(FileHandle pipe) : m_pipe(std::move(pipe)) {}

    HANDLE Pipe() const { return m_pipe.Get(); }

    PipeStep Connect();  // Ready: a client is there already

    // Reads what has come. Ready: the writer has closed its end and all is read. What is there already is Taken without
    // a packet: a packet could come too late (see PipeListener.cpp).
    PipeStep Read(std::size_t maxMessageBytes);

    // `bytes` of the read have come: by its packet.
    void Took(DWORD bytes) { m_filled += bytes; }

    // The packet still comes, with ERROR_OPERATION_ABORTED or with the result.
    void Cancel() { CancelIoEx(m_pipe.Get(), &m_operation); }

    void Disconnect() { DisconnectNamedPipe(m_pipe.Get()); }
    void Close() { m_pipe.Reset(); }

    std::string TakeMessage();
    std::size_t Filled() const { return m_filled; }

    PipeState state = PipeState::Closed;
    ULONGLONG deadline = kNever;  // of a resting or reading instance, on the 64-bit tick clock
    bool expired = false;         // the read was cancelled at the deadline

  private:
    void Reset();

    FileHandle m_pipe;
    OVERLAPPED m_operation{};
    std::string m_message;  // m_filled bytes of it have come, the rest is room for the read under way
    std::size_t m_filled = 0;
};

}  // namespace wrb
