// Kept objects without a lock: an object has one owner at a time, and each is closed once.
#include <atomic>

#include "Spares.h"
#include "Threads.h"

namespace {

std::atomic<int> g_open = 0;

struct NumberTraits {
    using Type = int*;
    static int* Empty() noexcept { return nullptr; }
    static void Close(int* number) noexcept {
        --g_open;
        delete number;
    }
};

}  // namespace

int main() {
    {
        wrb::Spares<NumberTraits> spares;
        OnThreads([&spares](int, int) {
            auto first = spares.Take([] { return ++g_open, new int(0); });
            auto second = spares.Take([] { return ++g_open, new int(0); });
            ++*first.Get();  // not atomic: ThreadSanitizer finds a second owner
            spares.Keep(std::move(first));
            ++*second.Get();
            spares.Keep(std::move(second));
        });
    }
    return g_open == 0 ? 0 : 1;
}
