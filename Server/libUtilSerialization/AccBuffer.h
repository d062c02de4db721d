// CAccBuffer: the growing block of bytes under every binary message.
//
// Appending grows the block by whole increments (see GrownCapacity). A buffer whose capacity has reached 2 MiB moves
// its bytes to a temporary file at the next append and from then on only the file grows: the buffer is in *file mode*,
// and Data() is null until the owner empties it.
//
// Errors: a block that cannot be allocated throws CIPCMsgBufferException kInvalidBuffer, a size that 32 bits cannot
// hold kOutOfRange; the bytes written before stay as they were. One thread at a time.
#pragma once

#include <cstdint>
#include <cstring>

#include "Block.h"

class CAccBuffer {
  public:
    static constexpr uint32_t kDefaultIncrement = 1024;
    static constexpr uint32_t kSpillCapacity = 0x200000;  // bytes of capacity at which the next append goes to a file

    explicit CAccBuffer(uint32_t increment = kDefaultIncrement) noexcept : m_increment(increment) {}
    CAccBuffer(const CAccBuffer& other);

    // Copies the bytes into a block of its own. When there is no memory for them the target is left empty and a log
    // line says so; a buffer in file mode copies as empty.
    CAccBuffer& operator=(const CAccBuffer& other);
    virtual ~CAccBuffer();

    void Append(const void* bytes, uint32_t count) {
        if (count > m_fastEnd - m_used) {
            AppendSlowly(bytes, count);
            return;
        }
        std::memcpy(m_data + m_used, bytes, count);
        m_used += count;
    }

    // Makes room for `count` more bytes, so that a writer that knows its size grows the block once. Only a hint: it
    // never throws and never takes the capacity to the size at which a buffer spills.
    void Reserve(uint32_t count) noexcept;

    uint32_t Size() const noexcept { return m_used; }
    uint32_t Capacity() const noexcept { return m_capacity; }
    uint32_t Increment() const noexcept { return m_increment; }

    // Valid until the next append or change of content; null in file mode and while nothing has been written.
    const uint8_t* Data() const noexcept { return m_data; }

    // Capacity of a block of `capacity` bytes after it has made room for `count` more: their sum, rounded up to the
    // next multiple of `increment`; a sum that is a multiple already still gains one whole increment.
    static constexpr uint64_t GrownCapacity(uint32_t capacity, uint32_t count, uint32_t increment) {
        const uint64_t needed = uint64_t{capacity} + count;
        return needed + increment - needed % increment;
    }

  protected:
    // Frees the block.
    void Empty() noexcept;

    // Uses `block` in place of its own; `increment` is the granule from now on. An owned block comes from AllocateBlock
    // and is freed by the buffer; one that is not owned must outlive its use and is never written to.
    void AttachBlock(uint8_t* block, uint32_t length, bool owned, uint32_t increment) noexcept;

    // Gives the block away and leaves the buffer empty. Throws kNotOwner for a block that is not the buffer's.
    wrb::CBlock DetachBlock();

    // Writes over bytes that are already there.
    void Overwrite(uint32_t offset, const void* bytes, uint32_t count);

  private:
    void AppendSlowly(const void* bytes, uint32_t count);
    bool TryGrow(uint32_t count) noexcept;
    void SetFastEnd() noexcept;

    friend class CIPCMsgBuffer;  // reads at full speed

    uint32_t m_capacity = 0;
    uint32_t m_used = 0;
    uint32_t m_increment;
    uint32_t m_fastEnd = 0;  // appends that end here or before need no decision; never below m_used
    uint8_t* m_data = nullptr;
    bool m_ownsData = false;
};
