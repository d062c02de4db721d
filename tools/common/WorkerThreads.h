// The threads that work off a queue.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace wrb {

// The owner ends the threads before the members that they use go away.
class WorkerThreads {
  public:
    // Each of `count` threads runs `work`, which must not throw. Throws std::system_error when a thread cannot start;
    // those before it run on.
    template <typename Work>
    void Start(unsigned count, const Work& work) {
        for (unsigned i = 0; i < count; ++i) {
            m_threads.emplace_back(work);
        }
    }

    // Sets `finishing` under `lock`, wakes all that wait for `changed`, and returns when every thread has ended. Once
    // `finishing` is true, `work` must return after the last queued entry.
    void Finish(std::mutex& lock, bool& finishing, std::condition_variable& changed);

  private:
    std::vector<std::jthread> m_threads;
};

}  // namespace wrb
