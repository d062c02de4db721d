#include "LoadRun.h"

#include <utility>

namespace wrb {

LoadRun::LoadRun(unsigned threads, uint64_t commands, OneCommand run)
    : m_commands(commands), m_run(std::move(run)), m_atWork(threads) {
    m_threads.reserve(threads);
    for (unsigned thread = 0; thread < threads; ++thread) {
        m_threads.emplace_back([this, thread] { Work(thread); });
    }
}

LoadRun::~LoadRun() {
    m_begun = m_commands;
    Wait();
}

void LoadRun::Wait() {
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

void LoadRun::Work(unsigned thread) {
    while (m_begun++ < m_commands && m_run(thread)) {
    }
    --m_atWork;
}

}  // namespace wrb
