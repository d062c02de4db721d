#include "FakePipeService.h"

#include <chrono>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace wrb::test {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr DWORD kLongestPiece = 1u << 16;

std::wstring Path(const std::wstring& name) {
    return L"\\\\.\\pipe\\" + name;
}

}  // namespace

std::wstring WideText(std::string_view bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

std::wstring Received::Text() const {
    const std::wstring text = WideText(bytes);
    return text.ends_with(L'\0') ? text.substr(0, text.size() - 1) : text;
}

FakePipeService::FakePipeService(const std::wstring& name, Handler handler)
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

FakePipeService::~FakePipeService() {
    SetEvent(m_stop.Get());
    m_thread.join();
}

std::vector<Received> FakePipeService::WaitFor(std::size_t count) const {
    std::unique_lock guard(m_lock);
    m_changed.wait_for(guard, kPatience, [&] { return m_messages.size() >= count; });
    return m_messages;
}

void FakePipeService::Serve() {
    for (Received received; ReceiveOne(received); received = {}) {
        if (m_handler) {
            m_handler(received);
        }
        {
            const std::scoped_lock guard(m_lock);
            m_messages.push_back(std::move(received));
        }
        m_changed.notify_all();
    }
}

bool FakePipeService::ReceiveOne(Received& received) {
    OVERLAPPED operation{};
    operation.hEvent = m_event.Get();
    // Waits for the operation and returns its bytes; std::nullopt when the client has gone or the service stops.
    const auto finish = [&](BOOL done) -> std::optional<DWORD> {
        const DWORD error = done ? ERROR_SUCCESS : GetLastError();
        const HANDLE handles[] = {m_event.Get(), m_stop.Get()};
        DWORD bytes = 0;
        if (error == ERROR_IO_PENDING && WaitForMultipleObjects(2, handles, FALSE, INFINITE) != WAIT_OBJECT_0) {
            CancelIoEx(m_pipe.Get(), &operation);
        }
        const bool begun = error == ERROR_SUCCESS || error == ERROR_IO_PENDING;
        return begun && GetOverlappedResult(m_pipe.Get(), &operation, &bytes, TRUE) ? std::optional(bytes)
                                                                                    : std::nullopt;
    };
    finish(ConnectNamedPipe(m_pipe.Get(), &operation));
    while (const auto bytes = finish(ReadFile(m_pipe.Get(), m_piece.data(), kLongestPiece, nullptr, &operation))) {
        received.bytes.append(m_piece.data(), *bytes);
        received.pieces.push_back(*bytes);
    }
    DisconnectNamedPipe(m_pipe.Get());
    return WaitForSingleObject(m_stop.Get(), 0) == WAIT_TIMEOUT;
}

FileHandle OpenPipeForWriting(const std::wstring& name) {
    const std::wstring path = Path(name);
    for (;;) {
        FileHandle pipe(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        if (pipe || GetLastError() != ERROR_PIPE_BUSY || !WaitNamedPipeW(path.c_str(), 10'000)) {
            return pipe;
        }
    }
}

bool WritePiece(const FileHandle& pipe, std::string_view bytes) {
    DWORD written = 0;
    return WriteFile(pipe.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size();
}

std::string PatternBytes(std::size_t count, uint32_t seed) {
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

}  // namespace wrb::test
