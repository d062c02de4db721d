#include "FakePipeService.h"

#include <chrono>
#include <cstring>
#include <stdexcept>

namespace wrb::test {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr DWORD kLongestPiece = 1u << 20;

std::wstring Path(const std::wstring& name) {
    return L"\\\\.\\pipe\\" + name;
}

}  // namespace

std::wstring tagReceived::Text() const {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    if (!text.empty() && text.back() == L'\0') {
        text.pop_back();
    }
    return text;
}

CFakePipeService::CFakePipeService(const std::wstring& name, Handler handler)
    : m_handler(std::move(handler)),
      m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_pipe(CreateNamedPipeW(Path(name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                              PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 1024, 1024, 10'000, nullptr)),
      m_piece(kLongestPiece) {
    if (!m_pipe) {
        throw std::runtime_error("the pipe's name is taken, error " + std::to_string(GetLastError()));
    }
    m_thread = std::thread([this] { Serve(); });
}

CFakePipeService::~CFakePipeService() {
    SetEvent(m_stop.Get());
    m_thread.join();
}

std::vector<tagReceived> CFakePipeService::WaitFor(std::size_t count) const {
    std::unique_lock guard(m_lock);
    m_changed.wait_for(guard, kPatience, [&] { return m_messages.size() >= count; });
    return m_messages;
}

void CFakePipeService::Serve() {
    tagReceived received;
    while (ReceiveOne(received)) {
        if (m_handler) {
            m_handler(received);
        }
        {
            const std::scoped_lock guard(m_lock);
            m_messages.push_back(std::move(received));
        }
        m_changed.notify_all();
        received = {};
    }
}

OVERLAPPED CFakePipeService::NewOperation() const {
    OVERLAPPED operation{};
    operation.hEvent = m_event.Get();
    return operation;
}

// False when the service is to stop; the operation has then ended.
bool CFakePipeService::Await(OVERLAPPED& operation) const {
    const HANDLE handles[] = {operation.hEvent, m_stop.Get()};
    if (WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0) {
        return true;
    }
    DWORD unused = 0;
    CancelIoEx(m_pipe.Get(), &operation);
    GetOverlappedResult(m_pipe.Get(), &operation, &unused, TRUE);
    return false;
}

bool CFakePipeService::ReceiveOne(tagReceived& received) {
    OVERLAPPED operation = NewOperation();
    if (!ConnectNamedPipe(m_pipe.Get(), &operation) && GetLastError() == ERROR_IO_PENDING && !Await(operation)) {
        return false;
    }
    for (DWORD bytes = 0;; received.bytes.append(m_piece.data(), bytes), received.pieces.push_back(bytes)) {
        operation = NewOperation();
        if (!ReadFile(m_pipe.Get(), m_piece.data(), kLongestPiece, nullptr, &operation)) {
            if (GetLastError() != ERROR_IO_PENDING) {
                break;
            }
            if (!Await(operation)) {
                return false;
            }
        }
        if (!GetOverlappedResult(m_pipe.Get(), &operation, &bytes, FALSE)) {
            break;
        }
    }
    DisconnectNamedPipe(m_pipe.Get());
    return true;
}

CFileHandle OpenPipeForWriting(const std::wstring& name) {
    const std::wstring path = Path(name);
    for (;;) {
        CFileHandle pipe(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        if (pipe || GetLastError() != ERROR_PIPE_BUSY || !WaitNamedPipeW(path.c_str(), 10'000)) {
            return pipe;
        }
    }
}

bool WritePiece(const CFileHandle& pipe, std::string_view bytes) {
    DWORD written = 0;
    return WriteFile(pipe.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

std::string PatternBytes(std::size_t count) {
    std::string bytes(count, '\0');
    uint32_t state = 12345;
    for (char& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

}  // namespace wrb::test
