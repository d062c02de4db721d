// CSerializer: a sequence of values and records without any header. See IPCMsgBuffer.h for the form of each value,
// the errors and the bounds.
//
//   void tagExample::Serialize(ISerializer& serializer) const {
//       CSerializer& out = serializer.GetSerializer();
//       out << m_number << m_text << m_flag << m_records;
//   }
//   void tagExample::Deserialize(ISerializer& serializer) {
//       CSerializer& in = serializer.GetSerializer();
//       in >> m_number >> m_text >> m_flag >> m_records;
//   }
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <vector>

#include "IPCMsgBuffer.h"
#include "ISerializer.h"

class CSerializer : public ISerializer, private CIPCMsgBuffer {
  public:
    explicit CSerializer(uint32_t increment = kDefaultIncrement) noexcept : CIPCMsgBuffer(increment) {}

    uint32_t GetSize() const override { return Size(); }
    CSerializer& GetSerializer() override { return *this; }
    int32_t GetData(void* buffer, uint32_t& length) override;
    void WriteBytes(const void* data, uint32_t length) override;
    CSerializer& operator<<(const ISerializable& record) override;
    CSerializer& operator>>(ISerializable& record) override;
    void Reset() override;
    bool Load(const void* bytes, uint32_t length) override;
    bool Attach(uint8_t* bytes, uint32_t length) override;

    // Numbers, bools, text and byte blocks.
    template <typename T>
    requires requires(CIPCMsgBuffer& buffer, const T& value) { buffer << value; }
    CSerializer& operator<<(const T& value) {
        static_cast<CIPCMsgBuffer&>(*this) << value;
        return *this;
    }
    template <typename T>
    requires requires(CIPCMsgBuffer& buffer, T& value) { buffer >> value; }
    CSerializer& operator>>(T& value) {
        static_cast<CIPCMsgBuffer&>(*this) >> value;
        return *this;
    }

    // Arrays of records. Reading replaces what the vector held; memory grows with the elements that were really there,
    // not with the count that the message claims.
    template <std::derived_from<ISerializable> Record>
    CSerializer& operator<<(const std::vector<Record>& records) {
        WriteCount(records.size());
        for (const Record& record : records) {
            record.Serialize(*this);
        }
        return *this;
    }
    template <std::derived_from<ISerializable> Record>
    CSerializer& operator>>(std::vector<Record>& records) {
        records.clear();
        for (uint32_t left = ReadCount(); left > 0; --left) {
            records.emplace_back().Deserialize(*this);
        }
        return *this;
    }

    using CAccBuffer::Data;
    using CAccBuffer::InFileMode;
    using CAccBuffer::kDefaultIncrement;
    using CIPCMsgBuffer::Remaining;

    // Gives the block away, GetSize() bytes of it as they were before the call, and leaves the message empty. Throws
    // kNotOwner when there is none or it is the view of a file.
    wrb::Block DetachBlock();

  protected:
    CIPCMsgBuffer& Buffer() noexcept { return *this; }

    using CAccBuffer::CreateFileModeFile;
    using CAccBuffer::m_block;
    using CAccBuffer::m_spill;
    using CAccBuffer::m_used;
    using CIPCMsgBuffer::AttachBlock;
    using CIPCMsgBuffer::Empty;
    using CIPCMsgBuffer::m_position;
    using CIPCMsgBuffer::TakeBlock;

    static constexpr uint32_t kAttachedIncrement = 32768;

    uint32_t m_formatValue = 1;
};
