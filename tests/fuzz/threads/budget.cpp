// The memory budget of messages in flight: what is taken is given back, and one message can always grow.
#include <atomic>

#include "MemoryBudget.h"
#include "Threads.h"

int main() {
    constexpr std::size_t kLimit = 100;
    constexpr std::size_t kMessage = 60;
    std::atomic<int> refused = 0;
    std::atomic<int> tooMuch = 0;
    wrb::MemoryBudget budget(kLimit, [] {});
    OnThreads([&](int, int) {
        wrb::MemoryShare share(budget);
        while (share.Bytes() < kMessage && share.Grow(20)) {
            tooMuch += budget.Used() > kLimit + kThreads * kMessage ? 1 : 0;
        }
        refused += share.Bytes() < kMessage ? 1 : 0;
    });
    return budget.Used() == 0 && tooMuch == 0 && refused < kThreads * kRounds ? 0 : 1;
}
