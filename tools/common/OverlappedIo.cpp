#include "OverlappedIo.h"

namespace wrb {

COverlappedIo::COverlappedIo(HANDLE handle) : m_handle(handle), m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

COverlappedIo::~COverlappedIo() {
    Cancel();
}

void COverlappedIo::Arm() {
    m_overlapped = {};
    m_overlapped.hEvent = m_event.Get();
    ResetEvent(m_event.Get());
    m_bytes = 0;
    m_error = 0;
}

bool COverlappedIo::Started(BOOL finished) {
    const DWORD error = finished ? 0 : GetLastError();
    switch (error) {
        case 0:
        case ERROR_IO_PENDING:
        case ERROR_MORE_DATA:
            m_pending = true;
            return true;
        case ERROR_PIPE_CONNECTED:  // the client came before the call: nothing is under way, nothing will be signalled
            return true;
        default:
            m_error = error;
            SetLastError(error);
            return false;
    }
}

bool COverlappedIo::BeginConnect() {
    Arm();
    return Started(ConnectNamedPipe(m_handle, &m_overlapped));
}

bool COverlappedIo::BeginRead(void* buffer, DWORD capacity) {
    Arm();
    return Started(ReadFile(m_handle, buffer, capacity, nullptr, &m_overlapped));
}

bool COverlappedIo::BeginWrite(const void* data, DWORD size) {
    Arm();
    return Started(WriteFile(m_handle, data, size, nullptr, &m_overlapped));
}

IoOutcome COverlappedIo::Wait(HANDLE stopEvent, DWORD milliseconds) {
    if (!m_pending) {
        return Settled();
    }
    const HANDLE handles[] = {m_event.Get(), stopEvent};
    switch (WaitForMultipleObjects(stopEvent != nullptr ? 2 : 1, handles, FALSE, milliseconds)) {
        case WAIT_OBJECT_0:
            return Collect(FALSE);
        case WAIT_OBJECT_0 + 1:
            return IoOutcome::Stopped;
        case WAIT_TIMEOUT:
            return IoOutcome::TimedOut;
        default:
            m_error = GetLastError();
            return IoOutcome::Failed;
    }
}

IoOutcome COverlappedIo::Cancel() {
    if (!m_pending) {
        return Settled();
    }
    CancelIoEx(m_handle, &m_overlapped);
    return Collect(TRUE);
}

IoOutcome COverlappedIo::Collect(BOOL wait) {
    m_error = GetOverlappedResult(m_handle, &m_overlapped, &m_bytes, wait) ? 0 : GetLastError();
    m_pending = false;
    return Settled();
}

IoOutcome COverlappedIo::Settled() const {
    return m_error == 0 || m_error == ERROR_MORE_DATA ? IoOutcome::Done : IoOutcome::Failed;
}

}  // namespace wrb
