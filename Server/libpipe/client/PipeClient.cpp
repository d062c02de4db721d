#include "PipeClient.h"

#include <algorithm>

#include "PipePath.h"

bool CPipeClient::Initial(const wchar_t* name) {
    wchar_t path[kPathCharacters];
    if (!wrb::StaysInPipeNamespace(name)) {
        SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    if (!wrb::FormatPipePath(path, kPathCharacters, name)) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    while (!Open(path)) {
        // ERROR_PIPE_BUSY: another client may connect between the end of the wait and the next open; wait again.
        if (GetLastError() != ERROR_PIPE_BUSY || !WaitNamedPipeW(path, NMPWAIT_USE_DEFAULT_WAIT)) {
            return false;
        }
    }
    DWORD mode = PIPE_READMODE_MESSAGE;
    return SetNamedPipeHandleState(m_pipe.Get(), &mode, nullptr, nullptr) != FALSE;
}

bool CPipeClient::Open(const wchar_t* path) noexcept {
    m_pipe.Reset();
    m_pipe = wrb::FileHandle(CreateFileW(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                         SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
    return static_cast<bool>(m_pipe);
}

bool CPipeClient::Send(const void* data, uint64_t& byteCount) {
    const char* const bytes = static_cast<const char*>(data);
    const uint64_t total = byteCount;
    byteCount = 0;
    while (byteCount < total) {
        const DWORD piece = static_cast<DWORD>(std::min<uint64_t>(total - byteCount, wrb::kPipePieceBytes));
        DWORD written = 0;
        if (WriteFile(m_pipe.Get(), bytes + byteCount, piece, &written, nullptr)) {
            byteCount += written;
        } else if (GetLastError() != ERROR_NO_SYSTEM_RESOURCES) {  // the system lacks memory for the moment: try again
            return false;
        }
    }
    return true;
}
