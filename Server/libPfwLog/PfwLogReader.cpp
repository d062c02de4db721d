#include "PfwLogReader.h"

#include <algorithm>

#include "PfwLogRecord.h"

namespace wrb {

static_assert(alignof(SWRB_PFW_LOG_ITEM) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

PfwLogReader::PfwLogReader(HANDLE file, std::size_t recordSize)
    : m_file(file), m_recordSize(recordSize), m_block(new uint8_t[recordSize * kBlockRecords]) {}

const void* PfwLogReader::Next() noexcept {
    if (m_next >= m_filled && !Fill()) {
        return nullptr;
    }
    const uint8_t* const record = m_block.get() + m_next;
    m_next += m_recordSize;
    return record;
}

std::size_t PfwLogReader::Read(std::size_t bytes) noexcept {
    DWORD read = 0;
    return ReadFile(m_file, m_block.get(), static_cast<DWORD>(bytes), &read, nullptr) ? read : 0;
}

bool PfwLogReader::Fill() noexcept {
    const std::size_t capacity = m_recordSize * kBlockRecords;
    // A block that cannot be read may still have records before the place that cannot.
    std::size_t read = Read(capacity);
    if (read == 0) {
        read = Read(m_recordSize);
    }
    const std::size_t missing = (m_recordSize - read % m_recordSize) % m_recordSize;
    std::fill_n(m_block.get() + read, missing, uint8_t{0});
    m_filled = read;
    m_next = 0;
    return read != 0;
}

}  // namespace wrb
