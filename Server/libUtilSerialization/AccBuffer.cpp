#include "AccBuffer.h"

#include <limits>
#include <utility>

#include "IPCMsgBufferException.h"
#include "SourceFile.h"

CAccBuffer::CAccBuffer(const CAccBuffer& other) : m_increment(other.m_increment) {
    *this = other;
}

CAccBuffer& CAccBuffer::operator=(const CAccBuffer& other) {
    if (this == &other) {
        return *this;
    }
    Empty();
    m_increment = other.m_increment;
    wrb::CBlock copy = wrb::AllocateBlock(other.m_used);
    if (copy && other.m_used > 0) {
        std::memcpy(copy.get(), other.m_data, other.m_used);
        AttachBlock(copy.release(), other.m_used, true, m_increment);
    }
    return *this;
}

CAccBuffer::~CAccBuffer() {
    Empty();
}

void CAccBuffer::Reserve(uint32_t count) noexcept {
    if (count > m_capacity - m_used && GrownCapacity(m_capacity, count, m_increment) < kSpillCapacity) {
        TryGrow(count);
    }
}

void CAccBuffer::Empty() noexcept {
    AttachBlock(nullptr, 0, false, m_increment);
}

void CAccBuffer::AttachBlock(uint8_t* block, uint32_t length, bool owned, uint32_t increment) noexcept {
    if (m_ownsData) {
        std::free(m_data);
    }
    m_data = block;
    m_capacity = length;
    m_used = length;
    m_fastEnd = length;
    m_increment = increment;
    m_ownsData = owned;
}

wrb::CBlock CAccBuffer::DetachBlock() {
    if (!m_ownsData) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kNotOwner, WRB_SOURCE_FILE, __LINE__);
    }
    m_ownsData = false;
    wrb::CBlock block(m_data);
    Empty();
    return block;
}

void CAccBuffer::Overwrite(uint32_t offset, const void* bytes, uint32_t count) {
    if (offset > m_used || count > m_used - offset) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    std::memcpy(m_data + offset, bytes, count);
}

void CAccBuffer::AppendSlowly(const void* bytes, uint32_t count) {
    if (count > m_capacity - m_used) {
        if (GrownCapacity(m_capacity, count, m_increment) > std::numeric_limits<uint32_t>::max()) {
            throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
        }
        if (!TryGrow(count)) {
            throw CIPCMsgBufferException(CIPCMsgBufferException::kInvalidBuffer, WRB_SOURCE_FILE, __LINE__);
        }
    }
    std::memcpy(m_data + m_used, bytes, count);
    m_used += count;
    SetFastEnd();
}

bool CAccBuffer::TryGrow(uint32_t count) noexcept {
    const auto capacity = static_cast<uint32_t>(GrownCapacity(m_capacity, count, m_increment));
    uint8_t* old = m_ownsData ? m_data : nullptr;
    auto* grown = static_cast<uint8_t*>(std::realloc(old, capacity));
    if (grown == nullptr) {
        return false;
    }
    if (!m_ownsData && m_used > 0) {
        std::memcpy(grown, m_data, m_used);
    }
    m_data = grown;
    m_ownsData = true;
    m_capacity = capacity;
    SetFastEnd();
    return true;
}

void CAccBuffer::SetFastEnd() noexcept {
    m_fastEnd = m_capacity < kSpillCapacity ? m_capacity : m_used;
}
