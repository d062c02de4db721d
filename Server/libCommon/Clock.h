// The system's clocks behind one seam, so that expiry is tested with a clock set by hand, never by sleeping.
#pragma once

#include <cstdint>

namespace wrb {

// Implementations are called from many threads at once and must allow it.
class IClock {
  public:
    virtual ~IClock() = default;

    // Milliseconds since the system started, in 32 bits: wraps every 49.7 days, so compare by unsigned difference.
    virtual uint32_t TickMilliseconds() const = 0;

    // Microseconds since a fixed moment: for run times.
    virtual uint64_t MonotonicMicroseconds() const = 0;

    // Whole seconds since the system started. For intervals: setting the calendar does not move it.
    virtual int64_t MonotonicSeconds() const = 0;

    // Whole seconds since 1970-01-01 00:00 UTC. It jumps when the clock is set.
    virtual int64_t CalendarSeconds() const = 0;
};

// The machine's own clocks. Never destroyed: lines are logged, with their time, until the very end of the process.
const IClock& SystemClock();

}  // namespace wrb
