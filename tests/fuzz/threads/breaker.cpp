// The breaker of the debug log: every line that is lost is counted once, while it trips and recovers.
#include <atomic>

#include "LogBreaker.h"
#include "Threads.h"

int main() {
    std::atomic<uint32_t> clock = 0xFFFF'F000;  // wraps on the way
    std::atomic<uint32_t> lost = 0;
    std::atomic<uint32_t> reported = 0;
    wrb::LogBreaker breaker;
    OnThreads([&](int thread, int round) {
        const uint32_t now = clock += 100;
        if (breaker.Skips(now)) {
            ++lost;
        } else if (round % 5 == thread) {
            breaker.Trip(now);
            ++lost;
        } else {
            breaker.Waited(now, 19, 20);
            reported += breaker.TakeLost();
        }
    });
    return lost > 0 && reported + breaker.TakeLost() == lost ? 0 : 1;
}
