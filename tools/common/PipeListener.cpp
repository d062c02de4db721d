#include "PipeListener.h"

#include <sddl.h>

#include <algorithm>
#include <utility>

#include "OverlappedIo.h"

namespace wrb {
namespace {

constexpr DWORD kChunkBytes = 65536;  // of one read, and of the system's buffers for a pipe
constexpr unsigned kMostInstances = PIPE_UNLIMITED_INSTANCES - 1;  // one more would mean: no limit

// System and administrators: everything. Everybody on this machine: connect, read and write.
constexpr wchar_t kPipeAccess[] = L"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GRGW;;;WD)";

// What is left of the time that a peer or a stop allows, on the tick clock.
class CDeadline {
  public:
    explicit CDeadline(uint32_t milliseconds) : m_end(GetTickCount64() + milliseconds) {}
    DWORD Left() const {
        const ULONGLONG now = GetTickCount64();
        return now >= m_end ? 0 : static_cast<DWORD>(m_end - now);
    }
    void Shorten(uint32_t milliseconds) { m_end = std::min(m_end, GetTickCount64() + milliseconds); }

  private:
    ULONGLONG m_end;
};

uint32_t ClientPid(HANDLE pipe) {
    ULONG pid = 0;
    return GetNamedPipeClientProcessId(pipe, &pid) ? pid : 0;
}

}  // namespace

const wchar_t* PipeDropText(PipeDrop reason) {
    switch (reason) {
        case PipeDrop::Oversized:
            return L"the message is too long";
        case PipeDrop::TimedOut:
            return L"the client fell silent";
        case PipeDrop::Broken:
            return L"reading failed";
        case PipeDrop::Stopping:
            return L"the service stops and the message is not complete";
        case PipeDrop::HandlerThrew:
            return L"handling the message failed";
    }
    return L"";
}

CPipeListener::CPipeListener(PipeListenerOptions options, Handler handler)
    : m_options(std::move(options)),
      m_handler(std::move(handler)),
      m_stopEvent(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

CPipeListener::~CPipeListener() {
    Stop();
}

bool CPipeListener::Start() {
    if (!m_stopEvent) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    if (!CreateInstances()) {
        m_pipes.clear();
        return false;
    }
    for (const CFileHandle& pipe : m_pipes) {
        m_threads.emplace_back([this, handle = pipe.Get()] { Serve(handle); });
    }
    return true;
}

bool CPipeListener::CreateInstances() {
    CLocalMemory descriptor;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(kPipeAccess, SDDL_REVISION_1, descriptor.Receive(),
                                                              nullptr)) {
        return false;
    }
    SECURITY_ATTRIBUTES access{sizeof(access), descriptor.Get(), FALSE};
    const std::wstring path = L"\\\\.\\pipe\\" + m_options.name;
    // The name is ours alone while we serve it, so that nobody can read what clients send: the first instance must
    // create it, and no instance fits in beside these. Wine knows the second rule only.
    const DWORD count = std::clamp(m_options.instances, 1u, kMostInstances);
    for (DWORD i = 0; i < count; ++i) {
        const DWORD first = i == 0 ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0;
        m_pipes.emplace_back(CreateNamedPipeW(path.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | first,
                                              PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS,
                                              count, kChunkBytes, kChunkBytes, m_options.clientWaitMilliseconds,
                                              &access));
        if (!m_pipes.back()) {
            const DWORD error = GetLastError();
            const bool taken = error == ERROR_ACCESS_DENIED || error == ERROR_PIPE_BUSY;
            SetLastError(taken ? ERROR_ALREADY_EXISTS : error);
            return false;
        }
    }
    return true;
}

void CPipeListener::Stop() {
    if (m_stopEvent) {
        SetEvent(m_stopEvent.Get());
    }
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
    m_pipes.clear();
}

PipeListenerCounters CPipeListener::Counters() const {
    return {m_accepted.load(), m_empty.load(), m_dropped.load()};
}

void CPipeListener::Serve(HANDLE pipe) {
    const auto chunk = std::make_unique<char[]>(kChunkBytes);  // outlives the operation that fills it
    COverlappedIo io(pipe);
    while (Connect(io)) {
        std::string message;
        const bool received = Receive(io, pipe, chunk.get(), message);
        if (received && message.empty()) {
            ++m_empty;
        } else if (received) {
            Handle(pipe, std::move(message));
        }
        io.Cancel();
        DisconnectNamedPipe(pipe);
    }
}

// True: a client is there. False: the service stops.
bool CPipeListener::Connect(COverlappedIo& io) {
    for (;;) {
        if (io.BeginConnect()) {
            const IoOutcome outcome = io.Wait(m_stopEvent.Get(), INFINITE);
            if (outcome == IoOutcome::Stopped) {
                return io.Cancel() == IoOutcome::Done;  // a client that came just before the cancel is served
            }
            if (outcome == IoOutcome::Done) {
                return true;
            }
        } else if (io.Error() == ERROR_NO_DATA) {
            return true;  // came, wrote and went before the call; what it wrote can still be read
        }
        // Connecting failed for good: pause, so that a lasting fault does not spin, and try again until the stop.
        if (WaitForSingleObject(m_stopEvent.Get(), 100) != WAIT_TIMEOUT) {
            return false;
        }
    }
}

// Reads until the writer has closed its end. False: dropped.
bool CPipeListener::Receive(COverlappedIo& io, HANDLE pipe, char* chunk, std::string& message) {
    CDeadline deadline(m_options.readTimeoutMilliseconds);
    bool stopping = false;
    for (;;) {
        IoOutcome outcome = io.BeginRead(chunk, kChunkBytes) ? IoOutcome::Done : IoOutcome::Failed;
        if (outcome == IoOutcome::Done) {
            outcome = io.Wait(stopping ? nullptr : m_stopEvent.Get(), deadline.Left());
        }
        if (outcome == IoOutcome::Stopped) {
            stopping = true;
            deadline.Shorten(m_options.drainMilliseconds);
            outcome = io.Wait(nullptr, deadline.Left());
        }
        if (outcome == IoOutcome::Failed && io.Error() == ERROR_BROKEN_PIPE) {
            return true;
        }
        if (outcome != IoOutcome::Done) {
            const bool late = outcome == IoOutcome::TimedOut;
            Drop(!late ? PipeDrop::Broken : stopping ? PipeDrop::Stopping : PipeDrop::TimedOut, pipe, message.size());
            return false;
        }
        if (io.Bytes() > m_options.maxMessageBytes - message.size()) {
            Drop(PipeDrop::Oversized, pipe, message.size() + io.Bytes());
            return false;
        }
        message.append(chunk, io.Bytes());
    }
}

void CPipeListener::Handle(HANDLE pipe, std::string message) {
    const std::size_t bytes = message.size();
    try {
        m_handler(std::move(message));
        ++m_accepted;
    } catch (...) {
        Drop(PipeDrop::HandlerThrew, pipe, bytes);
    }
}

void CPipeListener::Drop(PipeDrop reason, HANDLE pipe, std::size_t bytes) {
    ++m_dropped;
    if (m_options.onDrop) {
        m_options.onDrop(reason, bytes, ClientPid(pipe));
    }
}

}  // namespace wrb
