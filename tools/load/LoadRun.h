// Threads that act as agents, one command at a time each, until a number of commands is done or each has had enough.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

namespace wrb {

class LoadRun {
  public:
    // Does one command, on the thread of that number, counted from 0. False: this thread does no more. Must not throw.
    using OneCommand = std::function<bool(unsigned thread)>;

    static constexpr uint64_t kAnyNumber = uint64_t{1} << 63;

    LoadRun(unsigned threads, uint64_t commands, OneCommand run);  // starts
    ~LoadRun();                                                    // begins no more commands, and waits
    LoadRun(const LoadRun&) = delete;
    LoadRun& operator=(const LoadRun&) = delete;

    bool IsOver() const { return m_atWork == 0; }

    void Wait();

  private:
    void Work(unsigned thread);

    const uint64_t m_commands;
    const OneCommand m_run;
    std::atomic<uint64_t> m_begun{0};
    std::atomic<unsigned> m_atWork;      // threads
    std::vector<std::thread> m_threads;  // last: they use the members above
};

}  // namespace wrb
