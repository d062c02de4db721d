#include "LoggerState.h"

#include <new>

namespace wrb {

CLoggerState& CLoggerState::Shared() noexcept {
    alignas(CLoggerState) static unsigned char storage[sizeof(CLoggerState)];
    static CLoggerState* const state = new (storage) CLoggerState;
    return *state;
}

std::shared_ptr<const tagLoggerSetup> CLoggerState::Get() noexcept {
    const CSharedGuard guard(m_lock);
    return m_setup;
}

}  // namespace wrb
