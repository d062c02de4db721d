#include "PipeServer.h"

#include <algorithm>
#include <new>

#include "DebugLog.h"
#include "PipePath.h"
#include "SecurityAttributes.h"
#include "Spares.h"

namespace {

constexpr int kBusyRetries = 5;
constexpr DWORD kBusyRetryMilliseconds = 100;
constexpr DWORD kClientWaitMilliseconds = 1000;  // how long clients of a busy pipe wait by default
constexpr int64_t kTimerUnitsPerMillisecond = 10'000;
constexpr DWORD kUntimedMilliseconds = 100;  // most answers are there sooner, and need no timer

// Armed or expired: a server with a time-out arms its timer before it waits for it, which starts it anew. A server
// without one never does, so it takes none of these.
constinit wrb::Spares<wrb::KernelObjectTraits> spareTimers;

bool HasEnded(const wrb::ProcessHandle& process) {
    return process != nullptr && WaitForSingleObject(process->Get(), 0) == WAIT_OBJECT_0;
}

HANDLE MakeTimer() noexcept {
    return CreateWaitableTimerW(nullptr, TRUE, nullptr);
}

}  // namespace

CPipeServer::CPipeServer() : m_kernel32(LoadLibraryW(L"Kernel32.dll")) {
    if (!m_kernel32) {
        WRB_LOG(kLogWarning,
                L"%s - Failed to load Kernel32.dll, Windows API GetNamedPipeClientProcessId is NOT available",
                L"CPipeServer::CPipeServer");
        return;
    }
    const FARPROC function = GetProcAddress(m_kernel32.Get(), "GetNamedPipeClientProcessId");
    m_getClientPid = reinterpret_cast<GetClientPid*>(reinterpret_cast<void (*)()>(function));
    if (m_getClientPid == nullptr) {
        WRB_LOG(kLogWarning,
                L"%s - Windows API GetNamedPipeClientProcessId is NOT supported on this platform (Windows XP / Windows "
                L"2003)",
                L"CPipeServer::CPipeServer");
    }
}

CPipeServer::~CPipeServer() {
    if (m_timeoutSeconds != 0) {
        spareTimers.Keep(std::move(m_ownedUserObject));
    }
}

bool CPipeServer::Initial(const wchar_t* name, uint32_t timeoutSeconds) {
    m_timeoutSeconds = timeoutSeconds;
    OwnUserObject(timeoutSeconds == 0 ? wrb::KernelHandle(MakeTimer()) : spareTimers.Take(MakeTimer));
    return InitialOpen(name, m_ownedUserObject.Get());
}

bool CPipeServer::Initial(const wchar_t* name, HANDLE userEvent) {
    m_timeoutSeconds = 0;
    if (userEvent == nullptr) {
        OwnUserObject(wrb::KernelHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr)));
        userEvent = m_ownedUserObject.Get();
    }
    return InitialOpen(name, userEvent);
}

void CPipeServer::OwnUserObject(wrb::KernelHandle object) {
    if (!object) {
        WRB_LOG(kLogError, L"[CPipeServer::Initial] CreateEvent Failed! err=%d", GetLastError());
    }
    m_ownedUserObject = std::move(object);
}

bool CPipeServer::InitialOpen(const wchar_t* name, HANDLE userObject) {
    wrb::OpenSecurity security;
    if (!CreateSecurityAttributesWithoutACLs(security)) {
        WRB_LOG(kLogError, L"[CPipeServer::Initial] CreateSecurityAttributesWithoutACLs for %s failed.", name);
        return false;
    }
    return Initial(1, name, &security.attributes, userObject);
}

bool CPipeServer::Initial(uint32_t instanceCount, const wchar_t* name, SECURITY_ATTRIBUTES* securityAttributes,
                          HANDLE userObject) {
    const uint32_t count = std::min(instanceCount, kMostInstances);
    m_instances.reset(new (std::nothrow) wrb::ReplyPipe[count]);
    m_waitHandles.reset(new (std::nothrow) HANDLE[count + 2]());
    m_instanceCount = 0;
    if (m_instances == nullptr || m_waitHandles == nullptr) {
        WRB_LOG(kLogError, L"[CPipeServer::Initial] no memory for %u instances!", count);
        return false;
    }
    wrb::FormatPipePath(m_path, kPathCharacters, name);
    m_userObject = userObject;
    for (uint32_t i = 0; i < count; ++i) {
        if (!InitialInstance(m_instances[i], count, securityAttributes)) {
            return false;
        }
        m_waitHandles[i + 1] = m_instances[i].Event();
    }
    m_waitHandles[0] = userObject;
    m_instanceCount = count;
    return true;
}

bool CPipeServer::InitialInstance(wrb::ReplyPipe& instance, uint32_t count, SECURITY_ATTRIBUTES* securityAttributes) {
    if (!instance.CreateEventObject()) {
        WRB_LOG(kLogError, L"[CPipeServer::Initial] CreateEvent failed! err=%d", GetLastError());
        return false;
    }
    instance.Attach(CreatePipeInstance(count, securityAttributes));
    if (instance.Pipe() == INVALID_HANDLE_VALUE) {
        return false;
    }
    if (!instance.ConnectToNewClient()) {
        WRB_LOG(kLogError, L"[CPipeServer::Initial] ConnectToNewClient failed! err=%d", GetLastError());
        return false;
    }
    return true;
}

wrb::FileHandle CPipeServer::CreatePipeInstance(uint32_t count, SECURITY_ATTRIBUTES* securityAttributes) const {
    for (int retries = 0;; ++retries) {
        wrb::FileHandle pipe(CreateNamedPipeW(m_path, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                              PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS,
                                              count, wrb::kPipePieceBytes, wrb::kPipePieceBytes,
                                              kClientWaitMilliseconds, securityAttributes));
        if (pipe) {
            return pipe;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_PIPE_BUSY) {
            WRB_LOG(kLogError, L"[CPipeServer::Initial] CreateNamedPipe failed! err=%d", error);
            return pipe;
        }
        if (retries == kBusyRetries) {
            WRB_LOG(kLogError, L"[CPipeServer::Initial] Retry %d times. Still Failed!", kBusyRetries);
            return pipe;
        }
        Sleep(kBusyRetryMilliseconds);
    }
}

void CPipeServer::EndWith(const CPipeClient& client) noexcept {
    m_peerId = client.ServerProcessId();
    m_peer = wrb::ServerProcess(m_peerId);
    if (m_peer != nullptr && m_waitHandles != nullptr) {
        m_waitHandles[m_instanceCount + 1] = m_peer->Get();
    }
}

bool CPipeServer::FetchCmd(std::string& out, DWORD* clientPid) {
    return Fetch(out, clientPid, L"[CPipeServer::FetchCmd] string::append() for strCmd throw exception!");
}

bool CPipeServer::FetchCmd(std::wstring& out, DWORD* clientPid) {
    return Fetch(out, clientPid, L"[CPipeServer::FetchCmd] wstring::append() for strCmd throw exception!");
}

template <typename String>
bool CPipeServer::Fetch(String& out, DWORD* clientPid, const wchar_t* appendFailure) {
    out.clear();
    if (clientPid != nullptr) {
        *clientPid = 0;
    }
    if (m_buffer.Get() == nullptr) {
        WRB_LOG(kLogError, L"[CPipeServer::FetchCmd] m_buf == NULL");
        return false;
    }
    m_memory.Release();
    m_waitStart = 0;
    m_isTimed = false;
    DWORD readBytes = kReadBytes;
    for (DWORD fill = 0;;) {
        DWORD length = std::min(readBytes, wrb::ReceiveBuffer::kBytes - fill);
        ReadResult result = ReadPipe(m_buffer.Get() + fill, length, clientPid);
        if (result == ReadResult::Data) {
            fill += length;
            readBytes = length < readBytes ? readBytes : wrb::ReceiveBuffer::kBytes;
        }
        // What a process that dies has written looks like a whole message. It consists of whole pieces, or of none.
        if (result == ReadResult::Ended && (out.size() * sizeof out[0] + fill) % wrb::kPipePieceBytes == 0 &&
            HasEnded(m_peer)) {
            result = ReadResult::Abandoned;
        }
        if (result == ReadResult::Cancelled) {
            WRB_LOG(kLogWarning, L"[CPipeServer::FetchCmd] User define object is signaled!");
            return false;
        }
        if (result == ReadResult::Abandoned) {
            WRB_LOG(kLogWarning, L"[CPipeServer::FetchCmd] The process that was asked has ended!");
            return false;
        }
        if (result == ReadResult::Ended) {
            return AppendBuffer(out, fill, appendFailure);
        }
        if (fill == wrb::ReceiveBuffer::kBytes) {
            if (!AppendBuffer(out, fill, appendFailure)) {
                return false;
            }
            fill = 0;
        }
    }
}

template <typename String>
bool CPipeServer::AppendBuffer(String& out, DWORD bytes, const wchar_t* appendFailure) {
    using Character = typename String::value_type;
    if (bytes > kLargestMessageBytes - out.size() * sizeof(Character)) {
        WRB_LOG(kLogError, L"[CPipeServer::FetchCmd] The message on %s is longer than %u bytes!", m_path,
                static_cast<unsigned>(kLargestMessageBytes));
        return false;
    }
    if (!m_memory.Grow(bytes)) {
        WRB_LOG(kLogWarning,
                L"[CPipeServer::FetchCmd] The message on %s is refused, others take more than %u bytes! %u refused so "
                L"far",
                m_path, static_cast<unsigned>(m_memory.Limit()), wrb::AnswerMemory::Refused());
        return false;
    }
    try {
        out.append(reinterpret_cast<const Character*>(m_buffer.Get()), bytes / sizeof(Character));
    } catch (...) {
        WRB_LOG(kLogError, L"%s", appendFailure);
        return false;
    }
    return true;
}

CPipeServer::ReadResult CPipeServer::ReadPipe(uint8_t* buffer, DWORD& length, DWORD* clientPid) {
    uint32_t instance = 0;
    const ReadResult ready = AwaitInstance(instance);
    if (ready != ReadResult::Data) {
        return ready;
    }
    wrb::ReplyPipe& pipe = m_instances[instance];
    ReadResult result = pipe.Read(buffer, length);
    if (result == ReadResult::Pending) {
        ArmTimer();
        // A client that connects and never writes must not hold its reader beyond the object that ends the wait.
        result = pipe.FinishRead(length, m_userObject, m_peer == nullptr ? nullptr : m_peer->Get());
    }
    if (result == ReadResult::Ended && clientPid != nullptr) {
        *clientPid = QueryClientPid(pipe.Pipe());
    }
    return result;
}

// Data: `instance` has a client to read from. The user-defined object wins over data: it says that no answer is wanted
// any more, even one that has arrived.
CPipeServer::ReadResult CPipeServer::AwaitInstance(uint32_t& instance) {
    if (m_instanceCount == 1 && m_instances[0].IsReading()) {
        return WasUserObjectSignalled() ? ReadResult::Cancelled : ReadResult::Data;
    }
    if (m_waitHandles == nullptr) {  // never made ready
        return ReadResult::Ended;
    }
    ReconnectSpentInstances();
    for (bool isFirst = true;; isFirst = false) {
        const ReadResult result = AwaitClient(instance);
        if (result != ReadResult::Data || !IsStranger(m_instances[instance].Pipe())) {
            return result;
        }
        if (isFirst) {
            WRB_LOG(kLogWarning,
                    L"[CPipeServer::FetchCmd] Another process than the one that was asked is turned away!");
        }
        if (!DisconnectAndReconnect(instance)) {
            return ReadResult::Ended;
        }
    }
}

CPipeServer::ReadResult CPipeServer::AwaitClient(uint32_t& instance) {
    const DWORD signalled = Wait();
    if (signalled == WAIT_OBJECT_0) {
        return ReadResult::Cancelled;
    }
    if (m_peer != nullptr && signalled == WAIT_OBJECT_0 + m_instanceCount + 1) {
        return ReadResult::Abandoned;
    }
    instance = signalled - WAIT_OBJECT_0 - 1;
    const bool connected = instance < m_instanceCount && m_instances[instance].FinishConnect();
    return connected ? ReadResult::Data : ReadResult::Ended;
}

DWORD CPipeServer::Wait() {
    const DWORD count = m_instanceCount + (m_peer == nullptr ? 1 : 2);
    if (HasOwnTimer() && m_waitStart == 0) {
        m_waitStart = GetTickCount64();
        const DWORD others = count - 1;  // without the timer, which comes first and may be signalled still
        const DWORD signalled = WaitForMultipleObjects(others, m_waitHandles.get() + 1, FALSE, kUntimedMilliseconds);
        if (signalled != WAIT_TIMEOUT) {
            return signalled < WAIT_OBJECT_0 + others ? signalled + 1 : signalled;
        }
    }
    ArmTimer();
    return WaitForMultipleObjects(count, m_waitHandles.get(), FALSE, INFINITE);
}

// Called before a wait, not at the end of a message: most servers are destroyed after their one message, and starting
// and cancelling a connect that nobody needs would cost as much as the rest of the fetch.
void CPipeServer::ReconnectSpentInstances() {
    for (uint32_t i = 0; i < m_instanceCount; ++i) {
        if (m_instances[i].IsSpent()) {
            DisconnectAndReconnect(i);
        }
    }
}

bool CPipeServer::HasOwnTimer() const {
    return m_timeoutSeconds != 0 && m_userObject == m_ownedUserObject.Get();
}

// Once a message: a client that writes a little now and then must not hold its reader longer than a silent one.
void CPipeServer::ArmTimer() {
    if (m_timeoutSeconds == 0 || m_isTimed) {
        return;
    }
    m_isTimed = true;
    const ULONGLONG waited = m_waitStart == 0 ? 0 : GetTickCount64() - m_waitStart;
    LARGE_INTEGER due;
    due.QuadPart = static_cast<int64_t>(waited - m_timeoutSeconds * 1'000ull) * kTimerUnitsPerMillisecond;
    due.QuadPart = std::min<LONGLONG>(due.QuadPart, 0);  // negative: from now
    if (!SetWaitableTimer(m_userObject, &due, 0, nullptr, nullptr, FALSE)) {
        WRB_LOG(kLogWarning, L"SetWaitableTimer failed (%d)\n", GetLastError());
    }
}

// The server's own timer counts only during a wait.
bool CPipeServer::WasUserObjectSignalled() const {
    return !HasOwnTimer() && WaitForSingleObject(m_userObject, 0) == WAIT_OBJECT_0;
}

bool CPipeServer::IsStranger(HANDLE pipe) const {
    ULONG id = 0;
    return m_peerId != 0 && m_getClientPid != nullptr && m_getClientPid(pipe, &id) && id != m_peerId;
}

bool CPipeServer::DisconnectAndReconnect(uint32_t instance, DWORD* clientPid) {
    if (instance >= m_instanceCount) {
        return false;
    }
    if (clientPid != nullptr) {
        *clientPid = QueryClientPid(m_instances[instance].Pipe());
    }
    DisconnectNamedPipe(m_instances[instance].Pipe());
    return m_instances[instance].ConnectToNewClient();
}

DWORD CPipeServer::QueryClientPid(HANDLE pipe) const {
    ULONG pid = 0;
    if (m_getClientPid == nullptr || !m_getClientPid(pipe, &pid)) {
        return 0;
    }
    WRB_LOG(kLogDebug, L"%s - The connected pipe client PID [%d]", L"CPipeServer::DisconnectAndReconnect", pid);
    return pid;
}
