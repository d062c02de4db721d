// Sums of firewall counts over a sliding window, and the thresholds that they reach.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "Clock.h"
#include "SRWLock.h"

namespace wrb {

// The counts of a report, in their order: intrusions, firewall rules, total.
inline constexpr std::size_t kAlertCounts = 3;
using AlertCounts = std::array<uint32_t, kAlertCounts>;

struct AlertLimits {
    uint32_t windowSeconds;
    AlertCounts thresholds;  // 0: not watched
};

struct AlertSums {
    uint64_t reports = 0;
    std::array<uint64_t, kAlertCounts> counts{};
};

struct AlertState {
    AlertSums sums;                     // of the window, the new report included
    std::bitset<kAlertCounts> reached;  // the thresholds to notify somebody of
};

// Any thread. The seconds are those of the monotonic clock. A report counts while less than the window's length has
// passed since; the window keeps one entry a second.
class AlertWindow {
  public:
    // `clock` must outlive the window.
    explicit AlertWindow(const IClock& clock) : m_clock(clock) {}
    AlertWindow(const AlertWindow&) = delete;
    AlertWindow& operator=(const AlertWindow&) = delete;

    // Adds a report. A threshold that is reached shows once; again when the window has passed since.
    AlertState Add(const AlertCounts& counts, const AlertLimits& limits) WRB_EXCLUDES(m_lock);

    // True once a window: for a log line that must not repeat.
    bool TakeNote(uint32_t windowSeconds) WRB_EXCLUDES(m_lock);

  private:
    struct Entry {
        int64_t second;
        AlertSums sums;
    };
    using Time = std::optional<int64_t>;

    static bool TakeOnce(Time& last, int64_t now, uint32_t windowSeconds) noexcept;
    void DropOld(int64_t now, uint32_t windowSeconds) WRB_REQUIRES(m_lock);

    const IClock& m_clock;
    CWrbSRWLock m_lock;
    std::deque<Entry> m_entries WRB_GUARDED_BY(m_lock);
    AlertSums m_sums WRB_GUARDED_BY(m_lock);
    std::array<Time, kAlertCounts> m_alerted WRB_GUARDED_BY(m_lock);
    Time m_noted WRB_GUARDED_BY(m_lock);
};

}  // namespace wrb
