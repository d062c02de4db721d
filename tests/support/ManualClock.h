// A clock that stands still until the test moves it.
#pragma once

#include <atomic>
#include <cstdint>

#include "Clock.h"

class ManualClock final : public wrb::IClock {
  public:
    explicit ManualClock(uint32_t tick = 0, int64_t seconds = 0) : m_tick(tick), m_seconds(seconds) {}

    uint32_t TickMilliseconds() const override { return m_tick; }
    uint64_t MonotonicMicroseconds() const override { return m_microseconds; }
    int64_t MonotonicSeconds() const override { return m_passed; }
    int64_t CalendarSeconds() const override { return m_seconds; }

    void AdvanceTick(uint32_t milliseconds) {
        m_tick += milliseconds;
        m_microseconds += uint64_t{milliseconds} * 1000;
    }
    void AdvanceSeconds(int64_t seconds) {
        m_passed += seconds;
        m_seconds += seconds;
    }
    void StepCalendar(int64_t seconds) { m_seconds += seconds; }

  private:
    std::atomic<uint32_t> m_tick;
    std::atomic<uint64_t> m_microseconds{0};
    std::atomic<int64_t> m_passed{0};
    std::atomic<int64_t> m_seconds;
};
