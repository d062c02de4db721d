#include "PipeClient.h"

#include <algorithm>

#include "CancelAfter.h"
#include "Deadline.h"
#include "LastError.h"
#include "Patience.h"
#include "PipePath.h"
#include "Spares.h"

namespace {

// Signalled or not: the start of a write resets its event.
constinit wrb::Spares<wrb::KernelObjectTraits> spareEvents;

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
        const DWORD remaining = Remaining(deadline);
        if (remaining == 0) {
            SetLastError(ERROR_SEM_TIMEOUT);
            return false;
        }
        // Not for the time that the server has set, which may be any. Another client may connect between the end of the
        // wait and the next open; wait again.
        if (!WaitNamedPipeW(path, remaining) && GetLastError() != ERROR_SEM_TIMEOUT) {
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
            if (m_patience != nullptr) {
                m_patience->NoteProgress();
            }
        } else if (GetLastError() != ERROR_NO_SYSTEM_RESOURCES || deadline.Remaining() == 0) {
            return false;  // when the system lacks memory for the moment, the write is tried again
        }
    }
    return true;
}

DWORD CPipeClient::Remaining(const wrb::Deadline& deadline) const noexcept {
    const DWORD remaining = deadline.Remaining();
    return m_patience == nullptr ? remaining : m_patience->Allow(remaining);
}

// Also looks when no time is left.
bool CPipeClient::AwaitEvent(const wrb::Deadline& deadline) const noexcept {
    DWORD remaining;
    DWORD wait;
    do {
        remaining = Remaining(deadline);
        wait = WaitForSingleObject(m_event.Get(), remaining);
    } while (wait == WAIT_TIMEOUT && remaining != 0);
    return wait == WAIT_OBJECT_0;
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
    const bool ended = AwaitEvent(deadline);
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
    const wrb::Deadline deadline(m_milliseconds);
    while (const DWORD remaining = Remaining(deadline)) {
        const wrb::CancelAfter limit(m_pipe.Get(), remaining);
        if (!limit) {
            SetLastError(limit.Error());
            return false;
        }
        if (FlushFileBuffers(m_pipe.Get())) {
            return true;
        }
        if (GetLastError() != ERROR_OPERATION_ABORTED) {
            return false;
        }
    }
    SetLastError(ERROR_OPERATION_ABORTED);
    return false;
}

DWORD CPipeClient::ServerProcessId() const noexcept {
    ULONG pid = 0;
    return GetNamedPipeServerProcessId(m_pipe.Get(), &pid) ? pid : 0;
}
