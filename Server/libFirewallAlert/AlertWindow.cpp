#include "AlertWindow.h"

namespace wrb {

AlertState AlertWindow::Add(const AlertCounts& counts, const AlertLimits& limits) {
    const ExclusiveGuard guard(m_lock);
    const int64_t now = m_clock.MonotonicSeconds();
    DropOld(now, limits.windowSeconds);
    if (m_entries.empty() || m_entries.back().second != now) {
        m_entries.push_back({now, {}});
    }
    AlertSums& entry = m_entries.back().sums;
    AlertState state;
    ++entry.reports;
    ++m_sums.reports;
    for (std::size_t i = 0; i < kAlertCounts; ++i) {
        entry.counts[i] += counts[i];
        m_sums.counts[i] += counts[i];
        const uint32_t threshold = limits.thresholds[i];
        state.reached[i] =
            threshold != 0 && m_sums.counts[i] >= threshold && TakeOnce(m_alerted[i], now, limits.windowSeconds);
    }
    state.sums = m_sums;
    return state;
}

bool AlertWindow::TakeNote(uint32_t windowSeconds) {
    const ExclusiveGuard guard(m_lock);
    return TakeOnce(m_noted, m_clock.MonotonicSeconds(), windowSeconds);
}

bool AlertWindow::TakeOnce(Time& last, int64_t now, uint32_t windowSeconds) noexcept {
    if (last && now - *last < windowSeconds) {
        return false;
    }
    last = now;
    return true;
}

void AlertWindow::DropOld(int64_t now, uint32_t windowSeconds) {
    while (!m_entries.empty() && now - m_entries.front().second >= windowSeconds) {
        const AlertSums& old = m_entries.front().sums;
        m_sums.reports -= old.reports;
        for (std::size_t i = 0; i < kAlertCounts; ++i) {
            m_sums.counts[i] -= old.counts[i];
        }
        m_entries.pop_front();
    }
}

}  // namespace wrb
