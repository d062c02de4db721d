// A bound on the memory that messages in flight take together.
//
// A message may grow while all others together hold no more than the budget. So at most the budget and one message are
// in use, and one of the messages can always grow: those that hold the memory never wait for each other.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <utility>

namespace wrb {

class MemoryBudget {
  public:
    // `onRoom` is called, on any thread, when memory is given back after a message could not grow. It must not throw.
    MemoryBudget(std::size_t limit, std::function<void()> onRoom) : m_limit(limit), m_onRoom(std::move(onRoom)) {}
    MemoryBudget(const MemoryBudget&) = delete;
    MemoryBudget& operator=(const MemoryBudget&) = delete;

    std::size_t Used() const { return m_used; }

  private:
    friend class MemoryShare;

    // Takes `bytes` for a message that holds `held`.
    bool Take(std::size_t bytes, std::size_t held);
    bool TryTake(std::size_t bytes, std::size_t held);
    void GiveBack(std::size_t bytes);

    const std::size_t m_limit;
    const std::function<void()> m_onRoom;
    std::atomic<std::size_t> m_used{0};
    std::atomic<bool> m_wanted{false};
};

// The budgets of a listener. Messages that fit a connection's own buffer have a quarter of the memory to themselves, so
// that long ones cannot hold them up.
struct MessageBudgets {
    MessageBudgets(std::size_t limit, const std::function<void()>& onRoom)
        : longOnes(limit - limit / 4, onRoom), shortOnes(limit / 4, onRoom) {}

    MemoryBudget longOnes;
    MemoryBudget shortOnes;
};

// What one message holds of a budget; given back when it is destroyed. Belongs to one thread at a time, and must not
// outlive the budget.
class MemoryShare {
  public:
    MemoryShare() = default;
    explicit MemoryShare(MemoryBudget& budget) : m_budget(&budget) {}
    MemoryShare(MemoryShare&& other) noexcept : m_budget(other.m_budget), m_bytes(std::exchange(other.m_bytes, 0)) {}
    MemoryShare& operator=(MemoryShare&& other) noexcept;
    ~MemoryShare() { Release(); }

    // False: there is no room for `bytes` more now, and the budget's onRoom will be called when there may be.
    bool Grow(std::size_t bytes);

    void Release() noexcept;
    std::size_t Bytes() const { return m_bytes; }

  private:
    MemoryBudget* m_budget = nullptr;
    std::size_t m_bytes = 0;
};

}  // namespace wrb
