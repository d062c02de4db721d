// What every program over a shared structure shares: it does the same on some threads at once, and ThreadSanitizer says
// whether they touched anything without its lock.
#pragma once

#include <functional>
#include <thread>
#include <vector>

inline constexpr int kThreads = 4;
inline constexpr int kRounds = 2000;

// `work` gets the number of the thread and of the round.
inline void OnThreads(const std::function<void(int thread, int round)>& work) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&work, thread] {
            for (int round = 0; round < kRounds; ++round) {
                work(thread, round);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
