// A bound on how many calls wait long for their peers at the same time.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "Deadline.h"

namespace wrb {

// The places of those that wait long, each with a number for its peer. Any thread; nothing waits or allocates.
class LongWaits {
  public:
    static constexpr unsigned kMostPlaces = 254;

    // Takes one of the first `most` places. False when there is none.
    bool Enter(unsigned most, uint64_t peer) noexcept {
        for (unsigned i = 0; i < std::min(most, kMostPlaces); ++i) {
            uint64_t free = 0;
            if (m_peers[i].compare_exchange_strong(free, peer, std::memory_order_relaxed)) {
                return true;
            }
        }
        m_isFull.store(true, std::memory_order_relaxed);
        return false;
    }
    void Leave(uint64_t peer) noexcept {
        m_isFull.store(false, std::memory_order_relaxed);
        for (std::atomic<uint64_t>& place : m_peers) {
            uint64_t taken = peer;
            if (place.compare_exchange_strong(taken, 0, std::memory_order_relaxed)) {
                return;
            }
        }
    }

    // Whether somebody has found no place since the last one was left.
    bool IsFull() const noexcept { return m_isFull.load(std::memory_order_relaxed); }
    bool WaitsFor(uint64_t peer) const noexcept {
        return std::ranges::any_of(m_peers, [peer](const std::atomic<uint64_t>& place) {
            return place.load(std::memory_order_relaxed) == peer;
        });
    }

  private:
    std::array<std::atomic<uint64_t>, kMostPlaces> m_peers{};  // 0: free
    std::atomic<bool> m_isFull{false};
};

// What one call waits: half a second in all, or, while all places are taken, 50 ms without progress; longer only with a
// place, which it then keeps; not at all for a peer that keeps another call waiting long. One thread.
class Patience {
  public:
    // `most` is asked once, when the first time is over; it must not throw.
    Patience(LongWaits& waits, unsigned (*most)(), std::wstring_view peer) noexcept
        : m_waits(waits), m_most(most), m_peer(std::hash<std::wstring_view>()(peer) | 1) {}
    ~Patience() {
        if (m_isLong) {
            m_waits.Leave(m_peer);
        }
    }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

    // How much of `milliseconds` the next wait may take; 0: the call gives up.
    DWORD Allow(DWORD milliseconds) noexcept {
        if (m_isLong) {
            return milliseconds;
        }
        if (!m_all) {
            m_all.emplace(kBriefMilliseconds);
        }
        if (!m_brief) {
            m_brief.emplace(m_waits.WaitsFor(m_peer) ? 0 : m_waits.IsFull() ? kFullMilliseconds : kBriefMilliseconds);
        }
        if (const DWORD brief = std::min(m_brief->Remaining(), m_all->Remaining()); brief != 0) {
            return std::min(brief, milliseconds);
        }
        m_isLong = milliseconds != 0 && !m_waits.WaitsFor(m_peer) && m_waits.Enter(m_most(), m_peer);
        return m_isLong ? milliseconds : 0;
    }

    // The peer has taken something: the 50 ms begin anew.
    void NoteProgress() noexcept { m_brief.reset(); }

  private:
    static constexpr uint32_t kBriefMilliseconds = 500;
    static constexpr uint32_t kFullMilliseconds = 50;

    LongWaits& m_waits;
    unsigned (*m_most)();
    const uint64_t m_peer;            // never 0
    std::optional<Deadline> m_all;    // from the first wait
    std::optional<Deadline> m_brief;  // from the first wait since the last progress
    bool m_isLong = false;
};

}  // namespace wrb
