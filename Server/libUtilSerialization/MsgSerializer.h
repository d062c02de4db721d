// CMsgSerializer: one message to or from a back-end service; a header and then the body values.
//
// docs/wire-formats.md has the form, and the rules for the file of a large message.
//
// The cursor of a new, reset or received message stands at the body. One thread at a time. Not copied.
//
// File mode. A message that grows past 2 MiB continues in a temporary file (AccBuffer.h). Finalize turns it into a
// small message that names the file. The receiver's Load or Attach takes the file in, and deletes it when the message
// is reset, loaded again or destroyed. Who owns the file:
//   until Finalize      the sender's message, which deletes it like any other content;
//   from Finalize on    the receiver. The sender's object may go away at once, as it must for a message without answer.
//                       It deletes the file only in DiscardSentFile, for a message that could not be sent or was not
//                       answered. Load and Attach take an answer: the receiver has deleted the file, and its name may
//                       be another message's by now, so it is forgotten.
// A file is accepted only by the rules of SpillDirectory.h and ResultFile.h.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Serializer.h"

namespace wrb {
class ResultFile;
}

class CMsgSerializer : public CSerializer {
  public:
    static constexpr int kInMemory = 1;
    static constexpr int kInFile = 2;  // the message goes to a file from its first byte
    static constexpr uint32_t kStatusNoResultFile = 0x8009000E;

    explicit CMsgSerializer(const wchar_t* name = nullptr, int mode = kInMemory);
    CMsgSerializer(const CMsgSerializer&) = delete;
    CMsgSerializer& operator=(const CMsgSerializer&) = delete;
    ~CMsgSerializer() override;

    // Drops the body and writes the header again, with the same name, id and control block; the flags say that the body
    // follows.
    void Reset() override;

    // False, with the status set and no body to read, when the message names a file that cannot be had.
    bool Load(const void* bytes, uint32_t length) override;
    bool Attach(uint8_t* bytes, uint32_t length) override;

    // Called by the sender when the message is complete, before GetSize() and Data() are taken; does nothing in memory.
    // False when the temporary file did not take all bytes: the message cannot be sent.
    bool Finalize();

    // Deletes the file that Finalize handed over, when no answer has been taken since. Keeps the last error.
    void DiscardSentFile() noexcept;

    const std::wstring& Name() const noexcept { return m_name; }
    const std::wstring& Id() const noexcept { return m_id; }
    uint32_t Status() const noexcept { return m_control.status; }

    // Size in bytes from which a received file is mapped instead of read.
    void SetMapFrom(uint64_t bytes) noexcept { m_mapFrom = bytes; }

  private:
    struct ControlBlock {
        uint8_t mark[4] = {0x20, 0xAC, 0, 0};
        uint32_t flags = kBodyInMessage;
        uint32_t status = 0;
        uint32_t reserved = 0;
    };
    enum class Source { kMessage, kFile };

    static constexpr uint32_t kControlOffset = 12;  // in the message
    static constexpr uint32_t kBodyInMessage = 0x01;
    static constexpr uint32_t kBodyInFile = 0x02;

    void SetBodyPlace(uint32_t place) noexcept;
    void DropContent() noexcept;
    void WriteHeader();
    bool ReadHeader(Source source);
    void ReadControlBlock();
    bool ReadFile(const std::wstring& path);
    bool TakeFile(const std::wstring& path);

    ControlBlock m_control;
    std::wstring m_name;
    std::wstring m_id;
    std::wstring m_sentFile;                        // handed over by Finalize
    std::unique_ptr<wrb::ResultFile> m_resultFile;  // outlives the bytes that are a view of it
    uint64_t m_mapFrom;
};

namespace wrb {

// The numbers are printed as signed 32-bit decimals, so a tick count past 2^31 shows a minus sign.
std::wstring MakeMessageId(const std::wstring& name, uint32_t tickCount, uint32_t processId, uint32_t threadId);

}  // namespace wrb
