#include "BarePipe.h"

#include <windows.h>

#include "Handle.h"

namespace wrb::bench {
namespace {

std::wstring Path(const std::wstring& name) {
    return L"\\\\.\\pipe\\" + name;
}

}  // namespace

bool BareSend(const std::wstring& name, std::string_view bytes, std::size_t piece) {
    const std::wstring path = Path(name);
    FileHandle pipe;
    while (!pipe) {
        pipe.Reset(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        if (!pipe && (GetLastError() != ERROR_PIPE_BUSY || !WaitNamedPipeW(path.c_str(), NMPWAIT_USE_DEFAULT_WAIT))) {
            return false;
        }
    }
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (!SetNamedPipeHandleState(pipe.Get(), &mode, nullptr, nullptr)) {
        return false;
    }
    do {
        const std::string_view next = bytes.substr(0, piece);
        DWORD written = 0;
        if (!WriteFile(pipe.Get(), next.data(), static_cast<DWORD>(next.size()), &written, nullptr)) {
            return false;
        }
        bytes.remove_prefix(next.size());
    } while (!bytes.empty());
    return true;
}

bool BareExchange(const std::wstring& target, std::string_view request, const std::wstring& replyPipe) {
    const FileHandle reply(CreateNamedPipeW(Path(replyPipe).c_str(), PIPE_ACCESS_INBOUND,
                                            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, 1024, 1024, 1000,
                                            nullptr));
    if (!reply || !BareSend(target, request)) {
        return false;
    }
    // The client may have connected before this call, and may have written and closed already.
    if (!ConnectNamedPipe(reply.Get(), nullptr) && GetLastError() != ERROR_PIPE_CONNECTED &&
        GetLastError() != ERROR_NO_DATA) {
        return false;
    }
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(reply.Get(), buffer, sizeof buffer, &read, nullptr)) {
    }
    return GetLastError() == ERROR_BROKEN_PIPE;
}

}  // namespace wrb::bench
