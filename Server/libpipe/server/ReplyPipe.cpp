#include "ReplyPipe.h"

#include "Spares.h"

namespace wrb {
namespace {

// Signalled or not: the start of an operation resets its event.
constinit Spares<KernelObjectTraits> spareEvents;

}  // namespace

bool ReplyPipe::CreateEventObject() {
    m_event = spareEvents.Take([] { return CreateEventW(nullptr, TRUE, TRUE, nullptr); });
    m_overlapped = {};
    m_overlapped.hEvent = m_event.Get();
    return static_cast<bool>(m_event);
}

bool ReplyPipe::ConnectToNewClient() {
    EndPending();
    m_spent = false;
    if (ConnectNamedPipe(m_pipe.Get(), &m_overlapped)) {
        m_pending = true;
    } else {
        switch (GetLastError()) {
            case ERROR_IO_PENDING:
                m_pending = true;
                break;
            case ERROR_PIPE_CONNECTED:  // a client came before the call,
            case ERROR_NO_DATA:         // or came and has closed its end again
                SetEvent(m_event.Get());
                break;
            default:
                return false;
        }
    }
    m_state = m_pending ? State::Connecting : State::Reading;
    return true;
}

bool ReplyPipe::FinishConnect() {
    if (m_pending) {
        DWORD unused = 0;
        if (!GetOverlappedResult(m_pipe.Get(), &m_overlapped, &unused, FALSE)) {
            m_pending = GetLastError() == ERROR_IO_INCOMPLETE;  // then it still writes into the block
            return false;
        }
        m_pending = false;
        m_state = State::Reading;
    }
    return m_state == State::Reading;
}

ReplyPipe::ReadResult ReplyPipe::Read(void* buffer, DWORD& length) {
    const DWORD room = length;
    length = 0;
    if (ReadFile(m_pipe.Get(), buffer, room, &length, &m_overlapped)) {
        return length != 0 ? ReadResult::Data : Ended();
    }
    switch (GetLastError()) {
        case ERROR_IO_PENDING:
            return ReadResult::Pending;
        case ERROR_HANDLE_EOF:
        case ERROR_MORE_DATA:
            return CollectRead(length);
        default:
            return Ended();
    }
}

ReplyPipe::ReadResult ReplyPipe::FinishRead(DWORD& length, HANDLE stop, HANDLE peer) {
    const HANDLE handles[] = {stop, m_event.Get(), peer};
    const DWORD wait = WaitForMultipleObjects(peer == nullptr ? 2 : 3, handles, FALSE, INFINITE);
    if (wait == WAIT_OBJECT_0 + 1) {
        return CollectRead(length);
    }
    CancelAndWait();
    if (wait == WAIT_OBJECT_0 + 2) {
        return ReadResult::Abandoned;
    }
    return wait == WAIT_OBJECT_0 ? ReadResult::Cancelled : Ended();
}

ReplyPipe::ReadResult ReplyPipe::CollectRead(DWORD& length) {
    if (GetOverlappedResult(m_pipe.Get(), &m_overlapped, &length, TRUE) || GetLastError() == ERROR_MORE_DATA) {
        return ReadResult::Data;
    }
    return Ended();
}

ReplyPipe::ReadResult ReplyPipe::Ended() noexcept {
    m_spent = true;
    return ReadResult::Ended;
}

void ReplyPipe::CancelAndWait() noexcept {
    DWORD unused = 0;
    CancelIoEx(m_pipe.Get(), &m_overlapped);  // fails when the operation has ended; the wait is then short
    GetOverlappedResult(m_pipe.Get(), &m_overlapped, &unused, TRUE);
}

void ReplyPipe::EndPending() noexcept {
    if (m_pending) {
        CancelAndWait();
        m_pending = false;
    }
}

void ReplyPipe::Close() noexcept {
    EndPending();  // nothing may signal the event any more
    m_pipe.Reset();
    spareEvents.Keep(std::move(m_event));
}

}  // namespace wrb
