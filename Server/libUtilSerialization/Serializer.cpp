#include "Serializer.h"

#include <cstring>

#include "IPCMsgBufferException.h"

int32_t CSerializer::GetData(void* buffer, uint32_t& length) {
    const uint32_t start = m_position;
    const std::span<const uint8_t> block = TakeBlock();
    const auto size = static_cast<uint32_t>(block.size());
    const bool enough = buffer != nullptr && length >= size;
    if (enough) {
        std::memset(buffer, 0, length);
        std::memcpy(buffer, block.data(), size);
    } else {
        m_position = start;
    }
    length = size;
    return enough ? 1 : 0;
}

void CSerializer::WriteBytes(const void* data, uint32_t length) {
    Buffer() << std::span(static_cast<const uint8_t*>(data), length);
}

CSerializer& CSerializer::operator<<(const ISerializable& record) {
    record.Serialize(*this);
    return *this;
}

CSerializer& CSerializer::operator>>(ISerializable& record) {
    record.Deserialize(*this);
    return *this;
}

wrb::Block CSerializer::DetachBlock() {
    wrb::Block block = CAccBuffer::DetachBlock();
    m_position = 0;
    return block;
}

void CSerializer::Reset() {
    Empty();
}

bool CSerializer::Load(const void* bytes, uint32_t length) {
    Empty();
    if (bytes != nullptr) {
        Append(bytes, length);
    }
    return true;
}

bool CSerializer::Attach(uint8_t* bytes, uint32_t length) {
    AttachBlock(wrb::Block(bytes), bytes == nullptr ? 0 : length, kAttachedIncrement);
    return true;
}
