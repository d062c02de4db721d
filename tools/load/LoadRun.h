// Threads that act as agents, one command at a time each, until a number of commands is done.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

namespace wrb {

class LoadRun {
  public:
    // Does one command, on the thread of that number, counted from 0. Must not throw.
    using OneCommand = std::function<void(unsigned thread)>;

    LoadRun(unsigned threads, uint64_t commands, OneCommand run);  // starts
    ~LoadRun();                                                    // begins no more commands, and waits
    LoadRun(const LoadRun&) = delete;
    LoadRun& operator=(const LoadRun&) = delete;

    uint64_t Done() const { return m_ended; }
    uint64_t Commands() const { return m_commands; }
    bool IsOver() const { return m_ended >= m_commands; }

    // Until all commands are done.
    void Wait();

  private:
    void Work(unsigned thread);

    const uint64_t m_commands;
    const OneCommand m_run;
    std::atomic<uint64_t> m_begun{0};
    std::atomic<uint64_t> m_ended{0};
    std::vector<std::thread> m_threads;  // last: they use the members above
};

}  // namespace wrb
