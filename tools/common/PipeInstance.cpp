#include "PipeInstance.h"

#include <algorithm>
#include <utility>

namespace wrb {

void PipeInstance::Reset() {
    m_operation = {};
    m_filled = 0;
    expired = false;
    if (m_message.size() > kOwnBytes) {
        std::string().swap(m_message);
    }
    m_memory = MemoryShare(m_budgets.longOnes);
}

void PipeInstance::Close() {
    m_pipe.Reset();
    Reset();
}

PipeStep PipeInstance::Connect() {
    Reset();
    const DWORD error = ConnectNamedPipe(m_pipe.Get(), &m_operation) ? ERROR_IO_PENDING : GetLastError();
    switch (error) {
        case ERROR_IO_PENDING:
            return PipeStep::Pending;
        case ERROR_PIPE_CONNECTED:  // the client came before the call
        case ERROR_NO_DATA:         // and has disconnected; what it wrote can still be read
            return PipeStep::Ready;
        default:
            return PipeStep::Failed;
    }
}

// The room doubles, so that a long message is copied a few times only.
bool PipeInstance::MakeRoom(std::size_t most) {
    const std::size_t room = m_message.size();
    const std::size_t wanted = std::max(kOwnBytes, std::min(room * 2, most));
    if (wanted > kOwnBytes && !m_memory.Grow(wanted - room)) {
        return false;
    }
    m_message.resize(wanted);
    return true;
}

PipeStep PipeInstance::Read(std::size_t maxMessageBytes) {
    const std::size_t most =
        maxMessageBytes + 1;  // one byte more than the limit, so that an oversized message is detected
    if (m_filled == m_message.size() && !MakeRoom(most)) {
        return PipeStep::NoRoom;
    }
    const std::size_t wanted = std::min({most - m_filled, m_message.size() - m_filled, kOwnBytes});
    m_operation = {};
    DWORD bytes = 0;
    if (ReadFile(m_pipe.Get(), m_message.data() + m_filled, static_cast<DWORD>(wanted), &bytes, &m_operation)) {
        m_filled += bytes;
        return PipeStep::Taken;
    }
    switch (GetLastError()) {
        case ERROR_IO_PENDING:
            return PipeStep::Pending;
        case ERROR_BROKEN_PIPE:
            return PipeStep::Ready;
        default:
            return PipeStep::Failed;
    }
}

bool PipeInstance::CountMessage() {
    if (m_message.size() > kOwnBytes) {
        return true;
    }
    m_memory = MemoryShare(m_budgets.shortOnes);
    return m_memory.Grow(m_filled);
}

std::string PipeInstance::TakeMessage() {
    if (m_message.size() <= kOwnBytes) {
        return m_message.substr(0, m_filled);  // the buffer stays for the next message
    }
    m_message.resize(m_filled);
    return std::exchange(m_message, {});
}

}  // namespace wrb
