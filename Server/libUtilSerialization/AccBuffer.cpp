#include "AccBuffer.h"

#include <windows.h>

#include <limits>
#include <utility>

#include "DebugLog.h"
#include "IPCMsgBufferException.h"
#include "SpillFile.h"

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
    std::memcpy(copy.get(), other.m_data, other.m_used);
    AttachBlock(copy.release(), other.m_used, true, m_increment);
    return *this;
}

CAccBuffer::~CAccBuffer() {
    AttachBlock(nullptr, 0, false, m_increment);
}

void CAccBuffer::Reserve(uint32_t count) noexcept {
    if (count > m_capacity - m_used && GrownCapacity(m_capacity, count, m_increment) < kSpillCapacity) {
        TryGrow(count);
    }
}

void CAccBuffer::Empty() noexcept {
    if (!m_ownsData || m_capacity > kKeptCapacity) {
        AttachBlock(nullptr, 0, false, m_increment);
        return;
    }
    ForgetSpill();
    m_used = 0;
    m_fastEnd = m_capacity;
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
    ForgetSpill();
}

void CAccBuffer::ForgetSpill() noexcept {
    m_spillFailed = false;
    m_inFileOnly = 0;
    m_spill.reset();
}

wrb::Block CAccBuffer::DetachBlock() {
    if (!m_ownsData) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kNotOwner, WRB_SOURCE_FILE, __LINE__);
    }
    m_ownsData = false;
    wrb::Block block(m_data);
    Empty();
    return block;
}

void CAccBuffer::Overwrite(uint32_t offset, const void* bytes, uint32_t count) {
    if (offset > m_used || count > m_used - offset) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    std::memcpy(m_data + offset, bytes, count);
}

bool CAccBuffer::CreateFileModeFile() {
    m_spill = wrb::SpillFile::Create();
    m_spillFailed = !m_spill;
    if (!m_spill) {
        const auto error = static_cast<int>(GetLastError());
        WRB_LOG(kLogError, L"%s - [File mode] No temporary file, the message stays in memory. err = %d",
                L"CAccBuffer::CreateFileModeFile", error);
        return false;
    }
    WRB_LOG(kLogDebug, L"%s - [File mode] File = %s", L"CAccBuffer::CreateFileModeFile", m_spill->Path().c_str());
    m_spill->Write(m_data, m_used);
    SetFastEnd();
    return true;
}

std::unique_ptr<wrb::SpillFile> CAccBuffer::DetachSpillFile() noexcept {
    std::unique_ptr<wrb::SpillFile> file = std::move(m_spill);
    Empty();
    return file;
}

void CAccBuffer::AppendSlowly(const void* bytes, uint32_t count) {
    if (m_capacity >= kSpillCapacity && !m_spill && !m_spillFailed) {
        CreateFileModeFile();
    }
    if (m_spill) {
        AppendToFile(bytes, count);
    } else {
        AppendToBlock(bytes, count);
    }
}

void CAccBuffer::AppendToFile(const void* bytes, uint32_t count) {
    if (count > std::numeric_limits<uint32_t>::max() - Size()) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    m_spill->Write(bytes, count);
    m_inFileOnly += count;
}

void CAccBuffer::AppendToBlock(const void* bytes, uint32_t count) {
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
    const bool mayCopy = m_capacity < kSpillCapacity && !m_spill;
    m_fastEnd = mayCopy ? m_capacity : m_used;
}
