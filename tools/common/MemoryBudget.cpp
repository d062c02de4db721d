#include "MemoryBudget.h"

namespace wrb {

bool MemoryBudget::TryTake(std::size_t bytes, std::size_t held) {
    std::size_t used = m_used;
    do {
        if (used - held > m_limit) {
            return false;
        }
    } while (!m_used.compare_exchange_weak(used, used + bytes));
    return true;
}

bool MemoryBudget::Take(std::size_t bytes, std::size_t held) {
    if (TryTake(bytes, held)) {
        return true;
    }
    m_wanted = true;
    return TryTake(bytes, held);  // what was given back before the mark was seen by nobody
}

void MemoryBudget::GiveBack(std::size_t bytes) {
    m_used -= bytes;
    if (m_wanted.exchange(false)) {
        m_onRoom();
    }
}

MemoryShare& MemoryShare::operator=(MemoryShare&& other) noexcept {
    if (this != &other) {
        Release();
        m_budget = other.m_budget;
        m_bytes = std::exchange(other.m_bytes, 0);
    }
    return *this;
}

bool MemoryShare::Grow(std::size_t bytes) {
    if (m_budget == nullptr || !m_budget->Take(bytes, m_bytes)) {
        return false;
    }
    m_bytes += bytes;
    return true;
}

void MemoryShare::Release() noexcept {
    if (const std::size_t bytes = std::exchange(m_bytes, 0); bytes > 0) {
        m_budget->GiveBack(bytes);
    }
}

}  // namespace wrb
