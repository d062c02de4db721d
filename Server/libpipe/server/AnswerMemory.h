// The memory of the messages that the pipe servers of a process read at the same time.
#pragma once

#include <atomic>
#include <cstdint>

namespace wrb {

// What one message takes of it, until it is released. One thread; different objects on any threads.
class AnswerMemory {
  public:
    static constexpr uint64_t kTogether = 64u << 20;

    AnswerMemory() = default;
    ~AnswerMemory() { Release(); }
    AnswerMemory(const AnswerMemory&) = delete;
    AnswerMemory& operator=(const AnswerMemory&) = delete;

    // How many bytes the messages of all others may take for this one to grow.
    void SetLimit(uint64_t bytes) noexcept { m_limit = bytes; }
    uint64_t Limit() const noexcept { return m_limit; }

    // False when the others hold more than the limit. One message can always grow.
    bool Grow(uint64_t bytes) noexcept {
        if (s_held.fetch_add(bytes, std::memory_order_relaxed) - m_bytes > m_limit) {
            s_held.fetch_sub(bytes, std::memory_order_relaxed);
            s_refused.fetch_add(1, std::memory_order_relaxed);
            return false;
        }
        m_bytes += bytes;
        return true;
    }

    void Release() noexcept {
        s_held.fetch_sub(m_bytes, std::memory_order_relaxed);
        m_bytes = 0;
    }

    // How often Grow has failed in this process.
    static uint32_t Refused() noexcept { return s_refused.load(std::memory_order_relaxed); }

  private:
    static constinit inline std::atomic<uint64_t> s_held{0};
    static constinit inline std::atomic<uint32_t> s_refused{0};

    uint64_t m_bytes = 0;
    uint64_t m_limit = kTogether;
};

}  // namespace wrb
