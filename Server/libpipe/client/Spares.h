// Objects that a request is done with, kept for the next one, which then need not make its own.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

#include "Handle.h"

namespace wrb {

// Up to eight objects of one kind, whose empty value is null. Any thread, without a lock. What is still kept at the end
// is closed.
template <typename Traits>
class Spares {
  public:
    using Object = UniqueHandle<Traits>;

    constexpr Spares() = default;
    ~Spares() {
        for (auto& slot : m_slots) {
            Object(slot.load(std::memory_order_acquire)).Reset();
        }
    }
    Spares(const Spares&) = delete;
    Spares& operator=(const Spares&) = delete;

    // One that was kept, or else what `make` returns.
    template <typename Make>
    Object Take(Make make) noexcept {
        for (auto& slot : m_slots) {
            if (const auto kept = slot.exchange(nullptr, std::memory_order_acquire)) {
                return Object(kept);
            }
        }
        return Object(make());
    }

    // Closes the object when eight are kept already.
    void Keep(Object object) noexcept {
        for (auto& slot : m_slots) {
            typename Traits::Type empty = nullptr;
            if (slot.compare_exchange_strong(empty, object.Get(), std::memory_order_release,
                                             std::memory_order_relaxed)) {
                static_cast<void>(object.Release());
                return;
            }
        }
    }

  private:
    static constexpr std::size_t kMostKept = 8;
    std::array<std::atomic<typename Traits::Type>, kMostKept> m_slots{};
};

}  // namespace wrb
