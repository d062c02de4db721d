// CPipeClient: opens a local service's pipe for writing, writes one request and closes. The unit of exchange is the
// connection: the reader reads until the writer has closed its end, and nothing else marks a request's length.
//
// The client never logs, because the debug log itself travels through it: a call that fails returns false and leaves
// the cause in GetLastError. One object serves one request on one thread; callers on different threads share nothing.
#pragma once

#include <windows.h>

#include <cstdint>

#include "Handle.h"

namespace wrb {
class Deadline;
class Patience;
}  // namespace wrb

class CPipeClient {
  public:
    static constexpr uint32_t kDefaultMilliseconds = 30'000;

    // `patience`, which may be null, must outlive the object: it can end each wait earlier than the deadline does.
    explicit CPipeClient(wrb::Patience* patience = nullptr) noexcept : m_patience(patience) {}
    ~CPipeClient();  // closes the pipe and keeps the thread's last error
    CPipeClient(const CPipeClient&) = delete;
    CPipeClient& operator=(const CPipeClient&) = delete;

    // Opens the pipe of that bare name ("DbServerNamePipe"). The server may identify the client but not act in its
    // name. `milliseconds` is the longest time that this call takes, and that each Send takes.
    //
    // A busy pipe is waited for as often as it is busy; when the time is up, the call fails with ERROR_SEM_TIMEOUT
    // (121). The time-out that the pipe's server has set does not count: it may be any. Any other failure ends at once:
    // ERROR_FILE_NOT_FOUND (2) when no such pipe exists, ERROR_INVALID_NAME for a name that leads out of the pipe name
    // space, ERROR_FILENAME_EXCED_RANGE for a path of more than 259 characters.
    bool Initial(const wchar_t* name, uint32_t milliseconds = kDefaultMilliseconds);

    // The longest time that each later Send and AwaitReader takes.
    void LimitSend(uint32_t milliseconds) noexcept { m_milliseconds = milliseconds; }

    // Writes `byteCount` bytes in pieces of at most 1024; zero bytes succeed without a write. On return `byteCount`
    // holds what was written, also when the call failed. A full pipe is waited for; when the time is up, the write is
    // cancelled and the call fails with ERROR_SEM_TIMEOUT.
    bool Send(const void* data, uint64_t& byteCount);

    // Waits until the peer has read everything that was sent. When the time of Initial or LimitSend is up, the call
    // fails with ERROR_OPERATION_ABORTED (995). It fails, too, when the peer closes while it waits; a peer that closed
    // before the call cannot be told from one that has read everything.
    bool AwaitReader() noexcept;

    // The process that serves the open pipe; 0 when the system does not tell.
    DWORD ServerProcessId() const noexcept;

    void Close() noexcept { m_pipe.Reset(); }

  private:
    static constexpr std::size_t kPathCharacters = 260;

    bool Open(const wchar_t* path) noexcept;
    DWORD Remaining(const wrb::Deadline& deadline) const noexcept;
    bool AwaitEvent(const wrb::Deadline& deadline) const noexcept;
    bool WritePiece(const char* bytes, DWORD count, DWORD& written, const wrb::Deadline& deadline) noexcept;

    wrb::KernelHandle m_event;  // of the write that is pending; taken for the first one, then handed on
    wrb::FileHandle m_pipe;
    uint32_t m_milliseconds = kDefaultMilliseconds;
    wrb::Patience* m_patience;
};
