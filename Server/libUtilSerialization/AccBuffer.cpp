#include "AccBuffer.h"

#include <windows.h>

#include <limits>
#include <utility>

#include "DebugLog.h"
#include "IPCMsgBufferException.h"
#include "SpillFile.h"
#include "SystemText.h"

CAccBuffer::CAccBuffer(uint32_t increment) noexcept : m_increment(increment == 0 ? kDefaultIncrement : increment) {}

CAccBuffer::CAccBuffer(const CAccBuffer& other) : m_increment(other.m_increment) {
    *this = other;
}

CAccBuffer& CAccBuffer::operator=(const CAccBuffer& other) {
    if (this == &other) {
        return *this;
    }
    Empty();
    m_increment = other.m_increment;
    if (other.Data() == nullptr) {
        return *this;
    }
    wrb::Block copy = wrb::AllocateBlock(other.m_used);
    if (!copy) {
        WRB_LOG(kLogError, L"%s - Failed to allocate memory!", L"CAccBuffer::operator =");
        return *this;
    }
    std::memcpy(copy.get(), other.m_block.get(), other.m_used);
    AttachBlock(std::move(copy), other.m_used, m_increment);
    return *this;
}

CAccBuffer::~CAccBuffer() = default;

void CAccBuffer::Empty() noexcept {
    if (!m_block.get_deleter().owned || m_capacity > kKeptCapacity || m_spill) {
        AttachBlock(nullptr, 0, m_increment);
        return;
    }
    m_used = 0;
    m_spillFailed = false;
    m_inFileOnly = 0;
}

void CAccBuffer::AttachBlock(wrb::Block block, uint32_t length, uint32_t increment) noexcept {
    m_block = std::move(block);
    m_capacity = length;
    m_used = length;
    m_increment = increment;
    m_spill.reset();
    m_spillFailed = false;
    m_inFileOnly = 0;
}

wrb::Block CAccBuffer::DetachBlock() {
    if (!m_block || !m_block.get_deleter().owned) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kNotOwner, WRB_SOURCE_FILE, __LINE__);
    }
    wrb::Block block = std::move(m_block);
    AttachBlock(nullptr, 0, m_increment);
    return block;
}

bool CAccBuffer::CreateFileModeFile() {
    m_spill = wrb::SpillFile::Create();
    m_spillFailed = !m_spill;
    if (!m_spill) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - [File mode] No temporary file, the message stays in memory: %s",
                L"CAccBuffer::CreateFileModeFile", wrb::WideSystemText(error).c_str());
        return false;
    }
    WRB_LOG(kLogDebug, L"%s - [File mode] File = %s", L"CAccBuffer::CreateFileModeFile", m_spill->Path().c_str());
    m_spill->Write(m_block.get(), m_used);
    m_capacity = m_used;
    return true;
}

void CAccBuffer::AppendSlowly(const void* bytes, uint32_t count) {
    if (count == 0) {
        return;  // `bytes` may be null
    }
    if (count > std::numeric_limits<uint32_t>::max() - Size()) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    if (m_capacity >= kSpillCapacity && !m_spill && !m_spillFailed) {
        CreateFileModeFile();
    }
    if (m_spill) {
        m_spill->Write(bytes, count);
        m_inFileOnly += count;
        return;
    }
    if (count > m_capacity - m_used) {
        Grow(count);
    }
    std::memcpy(m_block.get() + m_used, bytes, count);
    m_used += count;
}

void CAccBuffer::Grow(uint32_t count) {
    const uint64_t capacity = GrownCapacity(m_capacity, count, m_increment);
    if (capacity > std::numeric_limits<uint32_t>::max()) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    const bool owned = m_block.get_deleter().owned;
    void* grown = std::realloc(owned ? m_block.get() : nullptr, capacity);
    if (grown == nullptr) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kInvalidBuffer, WRB_SOURCE_FILE, __LINE__);
    }
    if (!owned) {
        std::memcpy(grown, m_block.get(), m_used);
    }
    static_cast<void>(m_block.release());
    m_block = wrb::Block(static_cast<uint8_t*>(grown));
    m_capacity = static_cast<uint32_t>(capacity);
}
