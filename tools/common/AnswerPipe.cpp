#include "AnswerPipe.h"

#include <algorithm>

#include "Handle.h"
#include "PipePath.h"
#include "ServicePipes.h"

namespace wrb {
namespace {

constexpr std::size_t kPathCharacters = 260;

class Deadline {
  public:
    explicit Deadline(uint32_t milliseconds) : m_end(GetTickCount64() + milliseconds) {}
    DWORD Left(uint32_t atMost) const {
        const ULONGLONG now = GetTickCount64();
        return now >= m_end ? 0 : static_cast<DWORD>(std::min<ULONGLONG>(m_end - now, atMost));
    }

  private:
    ULONGLONG m_end;
};

DWORD Open(const wchar_t* path, uint32_t milliseconds, FileHandle& pipe) {
    const Deadline deadline(milliseconds);
    for (;;) {
        // The requester may learn who we are, but cannot act in our name.
        constexpr DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
        pipe.Reset(CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, kFlags, nullptr));
        if (pipe) {
            return 0;
        }
        const DWORD error = GetLastError();
        const DWORD left = deadline.Left(milliseconds);
        if (error != ERROR_PIPE_BUSY) {
            return error;
        }
        // 0 would mean the time-out that the pipe's server has set.
        if (left == 0 || (!WaitNamedPipeW(path, left) && GetLastError() == ERROR_SEM_TIMEOUT)) {
            return ERROR_TIMEOUT;
        }
    }
}

// Writes one piece. When the time is up the write is cancelled and waited for: the system must have let go of the
// bytes.
DWORD WritePiece(HANDLE pipe, HANDLE event, std::span<const uint8_t> piece, DWORD milliseconds) {
    OVERLAPPED operation{};
    operation.hEvent = event;
    DWORD written = 0;
    if (!WriteFile(pipe, piece.data(), static_cast<DWORD>(piece.size()), nullptr, &operation)) {
        const DWORD error = GetLastError();
        if (error != ERROR_IO_PENDING) {
            return error;
        }
    }
    const bool late = WaitForSingleObject(event, milliseconds) != WAIT_OBJECT_0;
    if (late) {
        CancelIoEx(pipe, &operation);
    }
    if (!GetOverlappedResult(pipe, &operation, &written, TRUE)) {
        const DWORD error = GetLastError();
        return late ? ERROR_TIMEOUT : error;
    }
    return written == piece.size() ? 0 : ERROR_WRITE_FAULT;
}

}  // namespace

DWORD WriteAnswer(const std::wstring& pipeName, std::span<const uint8_t> answer, const AnswerLimits& limits) {
    wchar_t path[kPathCharacters];
    if (!FormatPipePath(path, kPathCharacters, pipeName.c_str()) || !StaysInPipeNamespace(pipeName.c_str())) {
        return ERROR_INVALID_NAME;
    }
    if (NamesServicePipe(pipeName.c_str())) {
        return ERROR_ACCESS_DENIED;
    }
    FileHandle pipe;
    if (const DWORD error = Open(path, limits.connectMilliseconds, pipe); error != 0) {
        return error;
    }
    const Deadline deadline(limits.totalMilliseconds);
    const KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!event) {
        return GetLastError();
    }
    while (!answer.empty()) {
        const auto piece = answer.first(std::min<std::size_t>(answer.size(), kPipePieceBytes));
        const DWORD left = deadline.Left(limits.pieceMilliseconds);
        if (const DWORD error = WritePiece(pipe.Get(), event.Get(), piece, left); error != 0) {
            return error;
        }
        answer = answer.subspan(piece.size());
    }
    return 0;
}

}  // namespace wrb
