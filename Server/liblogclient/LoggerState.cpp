#include "LoggerState.h"

#include <new>

namespace wrb {

LoggerState& LoggerState::Shared() noexcept {
    alignas(LoggerState) static unsigned char storage[sizeof(LoggerState)];
    static LoggerState* const state = new (storage) LoggerState;
    return *state;
}

std::shared_ptr<const LoggerSetup> LoggerState::Get() noexcept {
    const SharedGuard guard(m_lock);
    return m_setup;
}

}  // namespace wrb
