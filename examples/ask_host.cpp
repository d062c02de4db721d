// Asks the running host for the manual-scan settings of an agent, or of the server, as a gateway program does. It needs
// no library of ours. Usage: ask_host [UID]
#include <windows.h>
// After windows.h, whose types it uses.
#include <sddl.h>

#include <cstdio>
#include <string>
#include <system_error>

namespace {

const std::wstring kPipes = L"\\\\.\\pipe\\";
const std::wstring kHostPipe = L"Calloway Systems WRBY Command Handler Manager";

// With what the system says about its last error.
[[noreturn]] void Fail(const char* what) {
    const auto error = static_cast<int>(GetLastError());
    throw std::system_error(error, std::system_category(), what);
}

class Handle {
  public:
    Handle(HANDLE handle, const char* failure) : m_handle(handle) {
        if (handle == INVALID_HANDLE_VALUE) {
            Fail(failure);
        }
    }
    ~Handle() { CloseHandle(m_handle); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    HANDLE Get() const { return m_handle; }

  private:
    HANDLE m_handle;
};

// Lets the host's account write to the reply pipe. A host that runs under another account than LocalService needs its
// SID here.
class ReplyAccess {
  public:
    ReplyAccess() {
        if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;;FA;;;OW)(A;;FA;;;SY)(A;;FA;;;BA)(A;;FW;;;LS)",
                                                                  SDDL_REVISION_1, &m_attributes.lpSecurityDescriptor,
                                                                  nullptr)) {
            Fail("no access list for the reply pipe");
        }
    }
    ~ReplyAccess() { LocalFree(m_attributes.lpSecurityDescriptor); }
    ReplyAccess(const ReplyAccess&) = delete;
    ReplyAccess& operator=(const ReplyAccess&) = delete;
    SECURITY_ATTRIBUTES* Get() { return &m_attributes; }

  private:
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

// One connection is one message.
void SendToHost(const std::wstring& message) {
    const Handle pipe(CreateFileW((kPipes + kHostPipe).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                  SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr),
                      "cannot open the host's pipe");
    const auto bytes = static_cast<DWORD>(message.size() * sizeof(wchar_t));
    DWORD written = 0;
    if (!WriteFile(pipe.Get(), message.data(), bytes, &written, nullptr) || written != bytes) {
        Fail("the host does not take the message");
    }
}

// Everything that the one client of the pipe writes.
std::wstring ReadAnswer(HANDLE pipe) {
    std::wstring answer;
    wchar_t piece[8192];
    DWORD bytes = 0;
    if (!ConnectNamedPipe(pipe, nullptr) && GetLastError() != ERROR_PIPE_CONNECTED) {
        Fail("nobody answers");
    }
    while (ReadFile(pipe, piece, sizeof piece, &bytes, nullptr) || GetLastError() == ERROR_MORE_DATA) {
        answer.append(piece, bytes / sizeof(wchar_t));
    }
    return answer;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    try {
        const std::wstring name = L"example_ask_host_" + std::to_wstring(GetCurrentProcessId());
        ReplyAccess access;
        const Handle reply(CreateNamedPipeW((kPipes + name).c_str(), PIPE_ACCESS_INBOUND,
                                            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS, 1,
                                            0, 65536, 0, access.Get()),
                           "cannot make the reply pipe");
        SendToHost(L"CMDHL_GET_MS_CFG\t" + name + L"\t" + (count > 1 ? arguments[1] : L""));
        std::wprintf(L"%ls", ReadAnswer(reply.Get()).c_str());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ask_host: %s\n", error.what());
        return 1;
    }
}
