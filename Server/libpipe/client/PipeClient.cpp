#include "PipeClient.h"

#include <algorithm>

#include "Deadline.h"
#include "LastError.h"
#include "PipePath.h"
#include "Spares.h"

namespace {

// Signalled or not: the start of a write resets its event.
constinit wrb::Spares<wrb::KernelObjectTraits> spareEvents;

// Cancels what is pending on a pipe once the time is up, for calls that have no time-out. It cancels again and again: a
// call may begin to wait just after the first time.
class CancelAfter {
  public:
    CancelAfter(HANDLE pipe, uint32_t milliseconds) noexcept : m_timer(CreateThreadpoolTimer(Cancel, pipe, nullptr)) {
        constexpr DWORD kAgainMilliseconds = 100;
        if (m_timer != nullptr) {
            ULARGE_INTEGER due;
            due.QuadPart = 0 - ULONGLONG{milliseconds} * 10'000;  // negative: from now, in units of 100 ns
            FILETIME time = {due.LowPart, due.HighPart};
            SetThreadpoolTimer(m_timer, &time, kAgainMilliseconds, 0);
        }
    }
    // No callback runs afterwards.
    ~CancelAfter() {
        if (m_timer != nullptr) {
            const wrb::KeepLastError cause;
            SetThreadpoolTimer(m_timer, nullptr, 0, 0);
            WaitForThreadpoolTimerCallbacks(m_timer, TRUE);
            CloseThreadpoolTimer(m_timer);
        }
    }
    CancelAfter(const CancelAfter&) = delete;
    CancelAfter& operator=(const CancelAfter&) = delete;

    explicit operator bool() const noexcept { return m_timer != nullptr; }

  private:
    static void CALLBACK Cancel(PTP_CALLBACK_INSTANCE, void* pipe, PTP_TIMER) { CancelIoEx(pipe, nullptr); }

    PTP_TIMER m_timer;
};

}  // namespace

CPipeClient::~CPipeClient() {
    spareEvents.Keep(std::move(m_event));
}

bool CPipeClient::Initial(const wchar_t* name, uint32_t milliseconds) {
    m_milliseconds = milliseconds;
    wchar_t path[kPathCharacters];
    if (!wrb::StaysInPipeNamespace(name)) {
        SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    if (!wrb::FormatPipePath(path, kPathCharacters, name)) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    const wrb::Deadline deadline(milliseconds);
    while (!Open(path)) {
        if (GetLastError() != ERROR_PIPE_BUSY) {
            return false;
        }
        const DWORD remaining = deadline.Remaining();
        if (remaining == 0) {
            SetLastError(ERROR_SEM_TIMEOUT);
            return false;
        }
        // Not for the time that the server has set, which may be any. Another client may connect between the end of the
        // wait and the next open; wait again.
        if (!WaitNamedPipeW(path, remaining)) {
            return false;
        }
    }
    DWORD mode = PIPE_READMODE_MESSAGE;
    return SetNamedPipeHandleState(m_pipe.Get(), &mode, nullptr, nullptr) != FALSE;
}

bool CPipeClient::Open(const wchar_t* path) noexcept {
    m_pipe.Reset();
    m_pipe =
        wrb::FileHandle(CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION | FILE_FLAG_OVERLAPPED, nullptr));
    return static_cast<bool>(m_pipe);
}

bool CPipeClient::Send(const void* data, uint64_t& byteCount) {
    const char* const bytes = static_cast<const char*>(data);
    const uint64_t total = byteCount;
    const wrb::Deadline deadline(m_milliseconds);
    byteCount = 0;
    if (!m_event) {
        m_event = spareEvents.Take([] { return CreateEventW(nullptr, TRUE, FALSE, nullptr); });
    }
    while (byteCount < total) {
        const DWORD piece = static_cast<DWORD>(std::min<uint64_t>(total - byteCount, wrb::kPipePieceBytes));
        DWORD written = 0;
        if (WritePiece(bytes + byteCount, piece, written, deadline)) {
            byteCount += written;
        } else if (GetLastError() != ERROR_NO_SYSTEM_RESOURCES || deadline.Remaining() == 0) {
            return false;  // when the system lacks memory for the moment, the write is tried again
        }
    }
    return true;
}

bool CPipeClient::WritePiece(const char* bytes, DWORD count, DWORD& written, const wrb::Deadline& deadline) noexcept {
    OVERLAPPED operation{};
    operation.hEvent = m_event.Get();
    if (WriteFile(m_pipe.Get(), bytes, count, &written, &operation)) {
        return true;
    }
    if (GetLastError() != ERROR_IO_PENDING) {
        return false;
    }
    const bool ended = WaitForSingleObject(m_event.Get(), deadline.Remaining()) == WAIT_OBJECT_0;
    if (!ended) {
        CancelIoEx(m_pipe.Get(), &operation);  // the next call waits for the cancellation
    }
    if (GetOverlappedResult(m_pipe.Get(), &operation, &written, TRUE)) {
        return true;
    }
    if (!ended && GetLastError() == ERROR_OPERATION_ABORTED) {
        SetLastError(ERROR_SEM_TIMEOUT);
    }
    return false;
}

bool CPipeClient::AwaitReader() noexcept {
    const CancelAfter limit(m_pipe.Get(), m_milliseconds);
    return limit && FlushFileBuffers(m_pipe.Get());
}

DWORD CPipeClient::ServerProcessId() const noexcept {
    ULONG pid = 0;
    return GetNamedPipeServerProcessId(m_pipe.Get(), &pid) ? pid : 0;
}
