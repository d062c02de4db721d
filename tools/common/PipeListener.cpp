#include "PipeListener.h"

#include <algorithm>
#include <future>
#include <new>
#include <utility>

#include "AccessList.h"
#include "PipeInstance.h"

namespace wrb {
namespace {

constexpr DWORD kBufferBytes = 65536;                              // the system's buffer for each instance
constexpr unsigned kMostInstances = PIPE_UNLIMITED_INSTANCES - 1;  // one more means unlimited
constexpr ULONGLONG kRestMilliseconds = 100;
constexpr DWORD kRetryMilliseconds = 10;

// What other accounts may do: clients open for writing alone. The right to write has that of creating instances in it,
// which is why the name takes no more instances than ours (see CreateInstance).
constexpr wchar_t kClientRights[] = L"GW";

// Packets that are about no instance: the kind is the byte count.
enum : DWORD { kStopPacket = 0, kRoomPacket = 1 };

unsigned InstanceCount(const PipeListenerOptions& options) {
    return std::clamp(options.instances, 1u, kMostInstances);
}

PipeListener::InOrder OnWorkers(unsigned workers, PipeListener::Handler handler) {
    return {workers, [handler = std::move(handler)](std::string message, const PipePeer&) -> Job {
                return [&handler, message = std::move(message)]() mutable { handler(std::move(message)); };
            }};
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
        case PipeDrop::NoMemory:
            return L"there is no memory for it";
    }
    return L"";
}

uint32_t PipePeer::Pid() const {
    ULONG pid = 0;
    return GetNamedPipeClientProcessId(m_instance->Pipe(), &pid) ? pid : 0;
}

MemoryShare PipePeer::TakeMemory() const {
    return m_instance->TakeMemory();
}

PipeListener::PipeListener(PipeListenerOptions options, InOrder inOrder)
    : m_options(std::move(options)),
      m_inOrder(std::move(inOrder)),
      m_path(L"\\\\.\\pipe\\" + m_options.name),
      m_memory(m_options.memoryBudget, [this] { Post(kRoomPacket, nullptr); }) {}

PipeListener::PipeListener(const PipeListenerOptions& options, Handler handler)
    : PipeListener(options, OnWorkers(InstanceCount(options), std::move(handler))) {}

PipeListener::~PipeListener() {
    Stop();
}

bool PipeListener::Start() {
    m_port.Reset(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 1));
    if (!m_port) {
        return false;
    }
    m_jobs.Start(m_inOrder.workers);
    std::promise<DWORD> created;
    std::future<DWORD> error = created.get_future();
    m_thread = std::thread([this, created = std::move(created)]() mutable { Run(created); });
    SetLastError(error.get());
    return GetLastError() == 0;
}

// Each instance waits for its client before the next one exists, so every client that connects is noticed.
DWORD PipeListener::CreateInstances() {
    AccessList access;
    if (!access.Set(m_options.allowed, kClientRights)) {
        return GetLastError();
    }
    const DWORD count = InstanceCount(m_options);
    m_instances.reserve(count);
    for (DWORD i = 0; i < count; ++i) {
        FileHandle pipe = CreateInstance(count, i == 0, access);
        if (!pipe) {
            const DWORD error = GetLastError();
            return error == ERROR_ACCESS_DENIED || error == ERROR_PIPE_BUSY ? ERROR_ALREADY_EXISTS : error;
        }
        PipeInstance& instance = *m_instances.emplace_back(std::make_unique<PipeInstance>(std::move(pipe), m_memory));
        const auto key = reinterpret_cast<ULONG_PTR>(&instance);
        if (CreateIoCompletionPort(instance.Pipe(), m_port.Get(), key, 0) == nullptr ||
            !SetFileCompletionNotificationModes(instance.Pipe(), FILE_SKIP_COMPLETION_PORT_ON_SUCCESS)) {
            const DWORD error = GetLastError();
            m_instances.pop_back();
            return error;
        }
        ++m_open;
        Arm(instance);
    }
    return 0;
}

// No other process may serve the name and read what clients send: the first instance must create the name, and the
// system admits no more than our `count` instances. Wine enforces only the second rule.
FileHandle PipeListener::CreateInstance(DWORD count, bool first, AccessList& access) const {
    const DWORD open = PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | (first ? FILE_FLAG_FIRST_PIPE_INSTANCE : 0);
    return FileHandle(
        CreateNamedPipeW(m_path.c_str(), open, PIPE_TYPE_MESSAGE | PIPE_READMODE_BYTE | PIPE_REJECT_REMOTE_CLIENTS,
                         count, kBufferBytes, kBufferBytes, m_options.clientWaitMilliseconds, access.Attributes()));
}

DWORD PipeListener::TryCreateInstances() noexcept {
    try {
        return CreateInstances();
    } catch (...) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

void PipeListener::Stop(uint32_t drainMilliseconds) {
    if (m_thread.joinable()) {
        m_drainMilliseconds = drainMilliseconds;
        Post(kStopPacket, nullptr);
        m_thread.join();
    }
    m_jobs.Finish();
    m_instances.clear();
}

PipeListenerCounters PipeListener::Counters() const {
    return {m_accepted.load(), m_empty.load(), m_dropped.load(), m_noMemory.load()};
}

// Every change of an instance happens on this thread: on the packet of its operation, on the packet of the worker that
// has finished its message, or at its deadline. A packet without an instance is the stop, or reports free memory for
// waiting instances. Nothing here may throw: functions that allocate catch their exceptions.
void PipeListener::Run(std::promise<DWORD>& created) {
    const DWORD failure = TryCreateInstances();
    if (failure != 0) {
        m_stopping = true;
        CancelConnects();  // another process may own the name: no client can be ours
    }
    created.set_value(failure);
    while (m_open > 0) {
        DWORD bytes = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* operation = nullptr;
        const BOOL good = GetQueuedCompletionStatus(m_port.Get(), &bytes, &key, &operation, NextDeadline());
        const DWORD error = good ? 0 : GetLastError();
        if (key != 0) {
            OnPacket(*reinterpret_cast<PipeInstance*>(key), operation == nullptr, bytes, error);
        } else if (good) {
            bytes == kRoomPacket ? OnRoom() : OnStop();
        }
        const ULONGLONG now = GetTickCount64();
        for (const auto& instance : m_instances) {
            if (instance->deadline <= now) {
                OnExpired(*instance);
            }
        }
    }
}

DWORD PipeListener::NextDeadline() const {
    ULONGLONG next = PipeInstance::kNever;
    for (const auto& instance : m_instances) {
        next = std::min(next, instance->deadline);
    }
    const ULONGLONG now = GetTickCount64();
    return next == PipeInstance::kNever ? INFINITE : static_cast<DWORD>(next > now ? next - now : 0);
}

void PipeListener::OnPacket(PipeInstance& instance, bool ours, DWORD bytes, DWORD error) {
    if (ours) {
        Recycle(instance);
    } else if (instance.state == PipeState::Reading) {
        OnRead(instance, bytes, error);
    } else if (error == 0) {
        Connected(instance);
    } else if (m_stopping) {
        Close(instance);
    } else {
        instance.state = PipeState::Resting;
        instance.deadline = GetTickCount64() + kRestMilliseconds;
    }
}

void PipeListener::OnRoom() {
    for (const auto& instance : m_instances) {
        if (instance->state == PipeState::Waiting) {
            ReadOn(*instance);
        }
    }
}

void PipeListener::OnExpired(PipeInstance& instance) {
    instance.deadline = PipeInstance::kNever;
    if (instance.state == PipeState::Resting) {
        Arm(instance);
    } else if (instance.state == PipeState::Waiting) {
        DropAndRecycle(PipeDrop::NoMemory, instance);
    } else {
        instance.expired = true;
        instance.Cancel();
    }
}

void PipeListener::OnStop() {
    for (const auto& instance : m_instances) {
        if (instance->state == PipeState::Resting) {  // a client may have connected to it and written meanwhile
            Arm(*instance);
        }
    }
    m_stopping = true;
    ConnectLastClients();
    for (const auto& instance : m_instances) {
        switch (instance->state) {
            case PipeState::Resting:
                Close(*instance);
                break;
            case PipeState::Reading:
            case PipeState::Waiting:
                instance->deadline = std::min(instance->deadline, GetTickCount64() + m_drainMilliseconds);
                if (instance->state == PipeState::Waiting) {
                    ReadOn(*instance);
                }
                break;
            default:
                break;
        }
    }
}

// Closing an instance that waits for its client, or cancelling its wait, could lose a message: until that moment a
// client may connect, write and close. So the listener connects to the instance itself. An instance with a client
// accepts no other, and one that has been read to its end is disconnected before it is closed.
void PipeListener::ConnectLastClients() {
    const auto waiting = std::ranges::count_if(
        m_instances, [](const auto& instance) { return instance->state == PipeState::Connecting; });
    for (auto i = waiting; i > 0; --i) {
        const FileHandle client(CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                            SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        if (!client) {
            if (GetLastError() != ERROR_PIPE_BUSY) {  // busy: every instance has another client
                CancelConnects();
            }
            return;
        }
        ++m_lastClients;
    }
}

// A client that connected just before is served.
void PipeListener::CancelConnects() {
    for (const auto& instance : m_instances) {
        if (instance->state == PipeState::Connecting) {
            instance->Cancel();
        }
    }
}

void PipeListener::Arm(PipeInstance& instance) {
    if (m_stopping) {
        Close(instance);
        return;
    }
    instance.state = PipeState::Connecting;
    switch (instance.Connect()) {
        case PipeStep::Ready:
            Connected(instance);
            break;
        case PipeStep::Failed:  // do not spin on a permanent fault
            instance.state = PipeState::Resting;
            instance.deadline = GetTickCount64() + kRestMilliseconds;
            break;
        default:
            break;
    }
}

void PipeListener::Connected(PipeInstance& instance) {
    instance.deadline = GetTickCount64() + (m_stopping ? m_drainMilliseconds : m_options.readTimeoutMilliseconds);
    ReadOn(instance);
}

// Reads all available data before it returns to the port. So a message whose client has closed is complete before the
// next connection of this client is seen: that connection's packet follows the current one.
void PipeListener::ReadOn(PipeInstance& instance) {
    instance.state = PipeState::Reading;
    try {
        switch (ReadAll(instance)) {
            case PipeStep::Pending:
                break;
            case PipeStep::NoRoom:
                instance.state = PipeState::Waiting;
                break;
            case PipeStep::Ready:
                Complete(instance);
                break;
            case PipeStep::Failed:
                DropAndRecycle(PipeDrop::Broken, instance);
                break;
            case PipeStep::Taken:
                DropAndRecycle(PipeDrop::Oversized, instance);
                break;
        }
    } catch (const std::bad_alloc&) {
        DropAndRecycle(PipeDrop::NoMemory, instance);
    }
}

// Taken: more than may come.
PipeStep PipeListener::ReadAll(PipeInstance& instance) {
    PipeStep step = PipeStep::Taken;
    while (step == PipeStep::Taken && instance.Filled() <= m_options.maxMessageBytes) {
        step = instance.Read(m_options.maxMessageBytes);
    }
    return step;
}

void PipeListener::OnRead(PipeInstance& instance, DWORD bytes, DWORD error) {
    instance.Took(bytes);
    if (error == ERROR_BROKEN_PIPE) {
        Complete(instance);
    } else if (instance.expired) {
        DropAndRecycle(m_stopping ? PipeDrop::Stopping : PipeDrop::TimedOut, instance);
    } else if (error != 0) {
        DropAndRecycle(PipeDrop::Broken, instance);
    } else {
        ReadOn(instance);
    }
}

// At a stop no message that is complete waits for memory: the instances bound what they take together.
void PipeListener::Complete(PipeInstance& instance) {
    if (instance.Filled() != 0 && !instance.CountMessage() && !m_stopping) {
        instance.state = PipeState::Waiting;
        return;
    }
    instance.state = PipeState::Handling;
    instance.deadline = PipeInstance::kNever;
    if (instance.Filled() == 0) {
        if (m_lastClients > 0) {
            --m_lastClients;
        } else {
            ++m_empty;
        }
        Recycle(instance);
        return;
    }
    try {
        Job job = m_inOrder.accept(instance.TakeMessage(), PipePeer(instance));
        if (job) {
            m_jobs.Push([this, &instance, job = std::move(job)] { RunJob(instance, job); });
            return;
        }
        ++m_accepted;
    } catch (...) {
        DropByException(instance);
    }
    Recycle(instance);
}

void PipeListener::RunJob(PipeInstance& instance, const Job& job) noexcept {
    try {
        job();
        ++m_accepted;
    } catch (...) {
        DropByException(instance);
    }
    Post(0, &instance);
}

// The system refuses a packet only while it has no memory for it. Without the packet the instance would be lost, or the
// stop would never come.
void PipeListener::Post(DWORD kind, PipeInstance* instance) noexcept {
    while (!PostQueuedCompletionStatus(m_port.Get(), kind, reinterpret_cast<ULONG_PTR>(instance), nullptr)) {
        Sleep(kRetryMilliseconds);
    }
}

// In a catch block.
void PipeListener::DropByException(PipeInstance& instance) noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        Drop(PipeDrop::NoMemory, instance);
    } catch (...) {
        Drop(PipeDrop::HandlerThrew, instance);
    }
}

void PipeListener::Drop(PipeDrop reason, PipeInstance& instance) noexcept {
    ++m_dropped;
    m_noMemory += reason == PipeDrop::NoMemory ? 1 : 0;
    try {
        if (m_options.onDrop) {
            m_options.onDrop(reason, instance.Filled(), PipePeer(instance).Pid());
        }
    } catch (...) {
        // It is counted all the same.
    }
}

void PipeListener::DropAndRecycle(PipeDrop reason, PipeInstance& instance) {
    Drop(reason, instance);
    Recycle(instance);
}

void PipeListener::Recycle(PipeInstance& instance) {
    instance.deadline = PipeInstance::kNever;
    instance.Disconnect();
    Arm(instance);
}

void PipeListener::Close(PipeInstance& instance) {
    if (instance.state != PipeState::Closed) {
        instance.state = PipeState::Closed;
        instance.deadline = PipeInstance::kNever;
        instance.Close();
        --m_open;
    }
}

}  // namespace wrb
