// One instance of a server pipe: the pipe, its event and its overlapped operation.
#pragma once

#include <windows.h>

#include <cstdint>

#include "Handle.h"

namespace wrb {

// The system writes into the OVERLAPPED block until an operation has ended, so the object has a fixed address, and
// destroying or closing it cancels the operation and waits for the cancellation. Used from one thread.
//
// Only a connect is left pending between calls; a read is completed or cancelled before its call returns. Nothing here
// logs: a call that fails leaves its cause in GetLastError.
class ReplyPipe {
  public:
    enum class State : uint32_t { Connecting = 0, Reading = 1 };
    enum class ReadResult { Data, Ended, Pending, Cancelled, Abandoned };

    ReplyPipe() = default;
    ~ReplyPipe() { Close(); }
    ReplyPipe(const ReplyPipe&) = delete;
    ReplyPipe& operator=(const ReplyPipe&) = delete;

    // Takes or makes the event, which the system signals when the pending operation ends. Close hands it on to the next
    // reply pipe.
    bool CreateEventObject();
    HANDLE Event() const noexcept { return m_event.Get(); }

    HANDLE Pipe() const noexcept { return m_pipe.Get(); }
    void Attach(FileHandle pipe) noexcept { m_pipe = std::move(pipe); }

    // Starts to wait for the next client. When one is connected already, the event is signalled at once.
    bool ConnectToNewClient();

    // To be called once the event is signalled. False when there is no client to read from.
    bool FinishConnect();

    // True while there is a client to read from.
    bool IsReading() const noexcept { return !m_pending && !m_spent && m_state == State::Reading; }

    // True once a client's message has ended: the pipe is to be disconnected and connected to a new client.
    bool IsSpent() const noexcept { return m_spent; }

    // Reads what is there, at most `length` bytes and at most the rest of one message of the pipe. On Data `length`
    // holds the bytes read. Ended: the writer has closed its end, or the read failed. Pending: nothing is there yet;
    // FinishRead must follow.
    ReadResult Read(void* buffer, DWORD& length);

    // Waits for the pending read; Cancelled when `stop` was signalled first, Abandoned when `peer`, which may be null,
    // was. The read has ended in any case. Bytes that a cancelled read has taken are lost.
    ReadResult FinishRead(DWORD& length, HANDLE stop, HANDLE peer);

    void Close() noexcept;

  private:
    ReadResult CollectRead(DWORD& length);
    ReadResult Ended() noexcept;
    void CancelAndWait() noexcept;
    void EndPending() noexcept;

    OVERLAPPED m_overlapped{};
    KernelHandle m_event;
    FileHandle m_pipe;
    State m_state = State::Connecting;
    bool m_pending = false;
    bool m_spent = false;
};

}  // namespace wrb
