#include "PipeInstance.h"

#include <algorithm>
#include <utility>

namespace wrb {
namespace {

constexpr std::size_t kReadBytes = 16 * 1024;

}  // namespace

void PipeInstance::Reset() {
    m_operation = {};
    m_message.clear();
    m_filled = 0;
    expired = false;
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

PipeStep PipeInstance::Read(std::size_t maxMessageBytes) {
    // One byte more than the limit, so that an oversized message is detected.
    const std::size_t wanted = std::min(maxMessageBytes + 1 - m_filled, kReadBytes);
    m_message.resize(m_filled + wanted);
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

std::string PipeInstance::TakeMessage() {
    m_message.resize(m_filled);
    return std::exchange(m_message, {});
}

}  // namespace wrb
