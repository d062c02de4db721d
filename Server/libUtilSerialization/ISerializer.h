// The two sides of a binary message: what can be written to one (ISerializable) and what writes and reads it
// (ISerializer). The order of the virtual functions is part of the contract with other modules; add at the end.
#pragma once

#include <cstdint>

class CSerializer;
class ISerializable;

class ISerializer {
  public:
    virtual uint32_t GetSize() const = 0;  // bytes written

    // The object itself. A record calls it once and then uses the typed operators of CSerializer directly, so that a
    // virtual call is made once a record and not once a field.
    virtual CSerializer& GetSerializer() = 0;

    // Reads the byte block at the cursor: 1 when `buffer` was given and `length` bytes are enough for it; the buffer is
    // zeroed first and `length` becomes the size of the block. Otherwise 0: `length` becomes the size needed and the
    // cursor stays. Throws when the block runs past the message.
    virtual int32_t GetData(void* buffer, uint32_t& length) = 0;

    virtual void WriteBytes(const void* data, uint32_t length) = 0;  // one byte block

    virtual ISerializer& operator<<(const ISerializable& record) = 0;
    virtual ISerializer& operator>>(ISerializable& record) = 0;

    // Back to an empty message.
    virtual void Reset() = 0;

    // Copies a received message in; the bytes are not the message's own. False when the message is sound but its body
    // cannot be had; a malformed message throws CIPCMsgBufferException. After either, the object can be reset, loaded
    // again or destroyed.
    virtual bool Load(const void* bytes, uint32_t length) = 0;

    // As Load, without copying: `bytes` comes from wrb::AllocateBlock and belongs to the message from the call on,
    // whatever the outcome.
    virtual bool Attach(uint8_t* bytes, uint32_t length) = 0;

    virtual ~ISerializer() = default;
};

// A record: its fields in declaration order, without a header of its own.
class ISerializable {
  public:
    virtual ISerializable* GetSerializable() { return this; }
    virtual void Deserialize(ISerializer& serializer) = 0;
    virtual void Serialize(ISerializer& serializer) const = 0;
    virtual ~ISerializable() = default;
    virtual void Clear() {}  // back to the default values; records that are never reused need not have it
};
