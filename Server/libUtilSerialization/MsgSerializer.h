// CMsgSerializer: one message to or from a back-end service; a header and then the body values.
//
//   offset  size
//    0       4    u32 4
//    4       4    u32 format value, 1
//    8       4    u32 16
//   12       16   control block: bytes 20 AC 00 00, u32 flags, u32 status, u32 0
//   28       ..   name, as text ("NULL" when none is given)
//   ..       ..   id, as text: "0105", name, tick count, "_", process id, "_", thread id
//   ..       ..   body values; in file mode one text instead: the path of the file that holds the message
//
// Flags: bit 0 (0x01) the body follows in the message, bit 1 (0x02) it is in a file; one or the other is set.
// Status: 0, or 0x8009000E when the file that a message names could not be had.
//
// The cursor of a new, reset or received message stands at the body. One thread at a time. Not copied.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Serializer.h"

class CMsgSerializer : public CSerializer {
  public:
    static constexpr int kInMemory = 1;
    static constexpr int kInFile = 2;  // the message goes to a file from its first byte
    static constexpr uint32_t kStatusNoResultFile = 0x8009000E;

    explicit CMsgSerializer(const wchar_t* name = nullptr, int mode = kInMemory);
    CMsgSerializer(const CMsgSerializer&) = delete;
    CMsgSerializer& operator=(const CMsgSerializer&) = delete;
    ~CMsgSerializer() override;

    // Drops the body and writes the header again, with the same name, id and control block.
    void Reset() override;
    bool Load(const void* bytes, uint32_t length) override;
    bool Attach(uint8_t* bytes, uint32_t length) override;

    // Called once by the sender when the message is complete, before GetSize() and Data() are taken.
    bool Finalize();

    const std::wstring& Name() const noexcept { return m_name; }
    const std::wstring& Id() const noexcept { return m_id; }
    uint32_t Status() const noexcept;

  private:
    using ControlBlock = std::array<uint8_t, 16>;

    void WriteHeader();
    bool ReadHeader();
    void ReadControlBlock();

    ControlBlock m_control;
    std::wstring m_name;
    std::wstring m_id;
};

namespace wrb {

// The numbers are printed as signed 32-bit decimals, so a tick count past 2^31 shows a minus sign.
std::wstring MakeMessageId(const std::wstring& name, uint32_t tickCount, uint32_t processId, uint32_t threadId);

}  // namespace wrb
