// CPipeClient: opens a local service's pipe for writing, writes one request and closes. The unit of exchange is the
// connection: the reader reads until the writer has closed its end, and nothing else marks a request's length.
//
// The client never logs, because the debug log itself travels through it: a call that fails returns false and leaves
// the cause in GetLastError. One object serves one request on one thread; callers on different threads share nothing.
#pragma once

#include <windows.h>

#include <cstdint>

#include "Handle.h"

class CPipeClient {
  public:
    CPipeClient() = default;  // the destructor closes the pipe and keeps the thread's last error

    // Opens the pipe of that bare name ("DbServerNamePipe"). The server may identify the client but not act in its
    // name. A busy pipe is waited for, with the time-out that its server has set, as often as it is busy; any other
    // failure ends at once: ERROR_FILE_NOT_FOUND (2) when no such pipe exists, ERROR_INVALID_NAME for a name that
    // leads out of the pipe name space, ERROR_FILENAME_EXCED_RANGE for a path of more than 259 characters.
    bool Initial(const wchar_t* name);

    // Writes `byteCount` bytes in pieces of at most 1024; zero bytes succeed without a write. On return `byteCount`
    // holds what was written, also when the call failed. Blocks while the pipe is full.
    bool Send(const void* data, uint64_t& byteCount);

    void Close() noexcept { m_pipe.Reset(); }

  private:
    static constexpr std::size_t kPathCharacters = 260;

    bool Open(const wchar_t* path) noexcept;

    wrb::FileHandle m_pipe;
};
