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

// Waits for what another thread or process brings about. A test that fails here runs into its time limit.
template <typename Condition>
void WaitUntil(const Condition& condition) {
    while (!condition()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace wrb::test
