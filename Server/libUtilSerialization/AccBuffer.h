// CAccBuffer: the growing block of bytes under every binary message.
//
// Appending grows the block by whole increments (see GrownCapacity). A buffer whose capacity has reached 2 MiB copies
// its bytes to a temporary file at the next append, and from then on only the file grows: the buffer is in *file mode*
// until it is emptied. Data() is then null, because the block no longer holds everything; what it held can still be
// read. Where no temporary file can be made the buffer stays in memory and does not try again.
//
// Errors: a block that cannot be allocated throws CIPCMsgBufferException kInvalidBuffer, a size that 32 bits cannot
// hold kOutOfRange; the bytes written before stay as they were. A write to the temporary file that fails shows when the
// message is finalized. One thread at a time.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>

#include "Block.h"

namespace wrb {
class SpillFile;
}

class CAccBuffer {
  public:
    static constexpr uint32_t kDefaultIncrement = 1024;
    static constexpr uint32_t kSpillCapacity = 0x200000;  // bytes of capacity at which the next append goes to a file
    static constexpr uint32_t kKeptCapacity = 0x10000;    // largest block that an emptied buffer keeps

    explicit CAccBuffer(uint32_t increment = kDefaultIncrement) noexcept;
    CAccBuffer(const CAccBuffer& other);

    // Copies the bytes into a block of its own. When there is no memory for them the target is left empty and a log
    // line says so; a buffer in file mode copies as empty.
    CAccBuffer& operator=(const CAccBuffer& other);
    virtual ~CAccBuffer();

    void Append(const void* bytes, uint32_t count) {
        if (count > m_capacity - m_used || m_capacity >= kSpillCapacity) {
            AppendSlowly(bytes, count);
        } else if (count > 0) {  // else `bytes` may be null
            std::memcpy(m_block.get() + m_used, bytes, count);
            m_used += count;
        }
    }

    // Bytes written, in memory or to the file.
    uint32_t Size() const noexcept { return m_used + m_inFileOnly; }
    uint32_t Capacity() const noexcept { return m_capacity; }

    // Valid until the next append or change of content; null in file mode and while nothing has been written.
    const uint8_t* Data() const noexcept { return m_spill ? nullptr : m_block.get(); }

    bool InFileMode() const noexcept { return m_spill != nullptr; }

    // Capacity of a block of `capacity` bytes after it has made room for `count` more: their sum, rounded up to the
    // next multiple of `increment`; a sum that is a multiple already still gains one whole increment.
    static constexpr uint64_t GrownCapacity(uint32_t capacity, uint32_t count, uint32_t increment) {
        const uint64_t needed = uint64_t{capacity} + count;
        return needed + increment - needed % increment;
    }

  protected:
    // Forgets the content and deletes the temporary file. A small block is kept, so that an object that is used for one
    // message after the other does not allocate each time.
    void Empty() noexcept;

    // Switches to file mode now. False when no temporary file can be made.
    bool CreateFileModeFile();

    // Uses `block` in place of its own; `increment` is the granule from now on. A block that is not owned (BlockFree)
    // must outlive its use and is never freed.
    void AttachBlock(wrb::Block block, uint32_t length, uint32_t increment) noexcept;

    // Gives the block away and leaves the buffer empty. Throws kNotOwner for a block that is not the buffer's.
    wrb::Block DetachBlock();

    wrb::Block m_block;
    uint32_t m_used = 0;                      // bytes in the block
    std::unique_ptr<wrb::SpillFile> m_spill;  // null in memory

  private:
    void AppendSlowly(const void* bytes, uint32_t count);
    void Grow(uint32_t count);

    uint32_t m_capacity = 0;  // of the block; in file mode no more than is used, so that nothing is appended to it
    uint32_t m_increment;
    bool m_spillFailed = false;
    uint32_t m_inFileOnly = 0;  // bytes in the temporary file that the block does not hold
};
