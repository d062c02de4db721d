// The same work on several threads, for tests of what they share.
#pragma once

#include <thread>
#include <vector>

namespace wrb::test {

// Calls work(0) to work(count - 1), each on a thread of its own, and waits for all of them.
template <typename Work>
void OnThreads(unsigned count, const Work& work) {
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&work, i] { work(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace wrb::test
