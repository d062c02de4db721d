// The window of the firewall alerts: reports on all threads, while the clock moves and the window changes. None of them
// is lost, and a threshold shows to one thread.
#include <atomic>

#include "AlertWindow.h"
#include "Threads.h"

namespace {

class SlowClock final : public wrb::IClock {
  public:
    uint32_t TickMilliseconds() const override { return 0; }
    uint64_t MonotonicMicroseconds() const override { return 0; }
    int64_t MonotonicSeconds() const override { return ++m_calls / 1000; }
    int64_t CalendarSeconds() const override { return 0; }

  private:
    mutable std::atomic<int64_t> m_calls{0};
};

}  // namespace

int main() {
    constexpr wrb::AlertLimits kLong{1'000'000, {kRounds, 0, 0}};
    const SlowClock clock;
    wrb::AlertWindow window(clock);
    std::atomic<int> shown = 0;
    OnThreads([&](int, int) { shown += window.Add({1, 2, 3}, kLong).reached[0] ? 1 : 0; });
    const wrb::AlertSums sums = window.Add({0, 0, 0}, kLong).sums;
    OnThreads([&](int thread, int round) {
        window.Add({1, 1, 1}, {static_cast<uint32_t>(1 + (thread + round) % 3), {1, 1, 1}});
        window.TakeNote(1);
    });
    return shown == 1 && sums.counts[2] == 3u * kThreads * kRounds ? 0 : 1;
}
