#include "ReceiveBuffer.h"

#include <array>
#include <atomic>
#include <new>

namespace wrb {
namespace {

class SpareBlocks {
  public:
    constexpr SpareBlocks() = default;
    ~SpareBlocks() {
        while (uint8_t* const block = Take()) {
            delete[] block;
        }
    }
    SpareBlocks(const SpareBlocks&) = delete;
    SpareBlocks& operator=(const SpareBlocks&) = delete;

    uint8_t* Take() noexcept {
        for (std::atomic<uint8_t*>& slot : m_slots) {
            if (uint8_t* const block = slot.exchange(nullptr, std::memory_order_acquire)) {
                return block;
            }
        }
        return nullptr;
    }

    bool Keep(uint8_t* block) noexcept {
        for (std::atomic<uint8_t*>& slot : m_slots) {
            uint8_t* empty = nullptr;
            if (slot.compare_exchange_strong(empty, block, std::memory_order_release, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

  private:
    static constexpr std::size_t kMostKept = 8;
    std::array<std::atomic<uint8_t*>, kMostKept> m_slots{};
};

constinit SpareBlocks spareBlocks;

}  // namespace

ReceiveBuffer::ReceiveBuffer() noexcept : m_bytes(spareBlocks.Take()) {
    if (m_bytes == nullptr) {
        m_bytes = new (std::nothrow) uint8_t[kBytes];
    }
}

ReceiveBuffer::~ReceiveBuffer() {
    if (m_bytes != nullptr && !spareBlocks.Keep(m_bytes)) {
        delete[] m_bytes;
    }
}

}  // namespace wrb
