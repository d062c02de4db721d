#include "PipeInstance.h"

#include <algorithm>
#include <utility>

namespace wrb {
namespace {

constexpr std::size_t kSmallestRead = 4096;

}  // namespace

void CPipeInstance::Reset() {
    m_operation = {};
    m_message.clear();
    m_filled = 0;
    expired = false;
}

PipeStep CPipeInstance::Connect() {
    Reset();
    const DWORD error = ConnectNamedPipe(m_pipe.Get(), &m_operation) ? ERROR_IO_PENDING : GetLastError();
    switch (error) {
        case ERROR_IO_PENDING:
            return PipeStep::Pending;
        case ERROR_PIPE_CONNECTED:  // the client came before the call
        case ERROR_NO_DATA:         // and has gone again; what it wrote can still be read
            return PipeStep::Ready;
        default:
            return PipeStep::Failed;
    }
}

PipeStep CPipeInstance::Read(std::size_t maxMessageBytes) {
    DWORD available = 0;
    if (!PeekNamedPipe(m_pipe.Get(), nullptr, 0, nullptr, &available, nullptr)) {
        available = 0;  // the read tells why
    }
    // One byte more than may come, so that an oversized message shows.
    const std::size_t most = maxMessageBytes - m_filled + 1;
    const std::size_t wanted = std::min(most, std::max<std::size_t>(available, kSmallestRead));
    m_message.resize(m_filled + wanted);
    m_operation = {};
    if (ReadFile(m_pipe.Get(), m_message.data() + m_filled, static_cast<DWORD>(wanted), nullptr, &m_operation)) {
        return PipeStep::Pending;  // done already, but its packet comes all the same
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

bool CPipeInstance::Took(DWORD bytes, std::size_t maxMessageBytes) {
    m_filled += bytes;
    return m_filled <= maxMessageBytes;
}

std::string CPipeInstance::TakeMessage() {
    m_message.resize(m_filled);
    return std::exchange(m_message, {});
}

}  // namespace wrb
