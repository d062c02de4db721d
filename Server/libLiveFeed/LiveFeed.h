// A ring of records in shared memory, from programs that do something to one that shows it live.
//
// Writers never wait: they write only while somebody looks, and overwrite what was not read in time. A reader that ends
// without a word is forgotten after three seconds.
#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace wrb {

// Lives in a section, which begins with zeros. Any thread of any process.
template <typename Record, std::size_t kPlaces>
class LiveFeed {
    static_assert(std::is_trivially_copyable_v<Record>);

  public:
    bool IsWatched() const noexcept {
        constexpr uint64_t kForgottenMilliseconds = 3000;
        return GetTickCount64() - m_lastLook.load(std::memory_order_relaxed) < kForgottenMilliseconds;
    }

    void Write(const Record& record) noexcept {
        const uint64_t number = m_written.fetch_add(1);
        Place& place = m_places[number % kPlaces];
        place.number.store(0);
        place.record = record;
        place.number.store(number + 1, std::memory_order_release);
    }

    // The reader's side: keeps the writers writing. The number of records so far.
    uint64_t Look() noexcept {
        m_lastLook.store(GetTickCount64(), std::memory_order_relaxed);
        return m_written.load();
    }

    // False: the record is overwritten, or not yet whole.
    bool Read(uint64_t number, Record& record) const noexcept {
        const Place& place = m_places[number % kPlaces];
        if (place.number.load(std::memory_order_acquire) != number + 1) {
            return false;
        }
        record = place.record;
        std::atomic_thread_fence(std::memory_order_acquire);
        return place.number.load(std::memory_order_relaxed) == number + 1;
    }

  private:
    struct Place {
        std::atomic<uint64_t> number;  // of the record, counted from 1; 0 while it is written
        Record record;
    };

    std::atomic<uint64_t> m_lastLook;
    std::atomic<uint64_t> m_written;
    std::array<Place, kPlaces> m_places;
};

}  // namespace wrb
