#include "LossCount.h"

#include <utility>

namespace wrb {
namespace {

constexpr uint32_t kMinuteMilliseconds = 60'000;

}  // namespace

uint64_t LossCount::Add() {
    const ExclusiveGuard guard(m_lock);
    ++m_untold;
    const uint32_t now = m_clock.TickMilliseconds();
    if (m_told && now - m_when < kMinuteMilliseconds) {
        return 0;
    }
    m_told = true;
    m_when = now;
    return std::exchange(m_untold, 0);
}

uint64_t LossCount::Rest() {
    const ExclusiveGuard guard(m_lock);
    return std::exchange(m_untold, 0);
}

}  // namespace wrb
