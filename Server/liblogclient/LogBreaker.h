// Keeps a log service that hangs, or is slow, from slowing down those who log.
#pragma once

#include <atomic>
#include <cstdint>

namespace wrb {

// All threads of a process share one. Times are ticks of IClock::TickMilliseconds. Any thread; nothing waits or
// allocates.
class LogBreaker {
  public:
    static constexpr uint32_t kPauseMilliseconds = 1'000;

    constexpr LogBreaker() = default;

    // Counts a line that took too long. No line is tried for the next second.
    void Trip(uint32_t now) noexcept {
        AddLost(1);
        Pause(now);
    }

    // Adds what a try has waited, whatever came of it; `limit` is the longest wait of a line. Ten such waits within a
    // second trip the breaker, of all threads together: a service that takes each line just before the limit would hold
    // them up for good. A wait of less than a quarter of the limit is that of a sound service and does not count.
    void Waited(uint32_t now, uint32_t milliseconds, uint32_t limit) noexcept {
        if (milliseconds < limit / 4 || milliseconds == 0) {
            return;
        }
        uint64_t before = m_waited.load(std::memory_order_relaxed);
        uint64_t after;
        do {
            const bool isSameSecond = now - static_cast<uint32_t>(before >> 32) < kSecond;
            after = (isSameSecond ? before : uint64_t{now} << 32) + milliseconds;
        } while (!m_waited.compare_exchange_weak(before, after, std::memory_order_relaxed));
        if (static_cast<uint32_t>(after) >= kMostLimits * limit) {
            Pause(now);
        }
    }

    // Whether the second still runs. If so, a line is counted as lost.
    bool Skips(uint32_t now) noexcept {
        uint64_t tripped = m_tripped.load(std::memory_order_relaxed);
        if (tripped == 0) {
            return false;
        }
        if (now - static_cast<uint32_t>(tripped) >= kPauseMilliseconds) {
            m_tripped.compare_exchange_strong(tripped, 0, std::memory_order_relaxed);  // unless tripped again
            return false;
        }
        AddLost(1);
        return true;
    }

    void AddLost(uint32_t lines) noexcept { m_lost.fetch_add(lines, std::memory_order_relaxed); }

    // How many lines were lost since the last call.
    uint32_t TakeLost() noexcept {
        return m_lost.load(std::memory_order_relaxed) == 0 ? 0 : m_lost.exchange(0, std::memory_order_relaxed);
    }

  private:
    static constexpr uint64_t kTripped = uint64_t{1} << 32;
    static constexpr uint32_t kSecond = 1'000;
    static constexpr uint32_t kMostLimits = 10;

    void Pause(uint32_t now) noexcept { m_tripped.store(kTripped | now, std::memory_order_relaxed); }

    std::atomic<uint64_t> m_tripped{0};  // kTripped and the tick
    std::atomic<uint64_t> m_waited{0};   // since when, in the upper half, and how long
    std::atomic<uint32_t> m_lost{0};
};

}  // namespace wrb
