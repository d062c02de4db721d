// The frame in front of every request to the database server: it tells the server who is asking. It is the magic, the
// length of the header message, and the header message; docs/wire-formats.md has the layout.
//
// The content is for the server's log and statistics. It comes from the client and proves nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "ISerializer.h"

class CPipeClient;

inline constexpr uint32_t kDbApiMagic = 0x0E1A0703;

// Where the header message starts.
inline constexpr uint32_t kDbApiHeaderOffset = 8;

// Longest header message that a reader accepts; what a client writes stays below 2 KiB.
inline constexpr uint32_t kDbApiHeaderLimit = 0x4000;

class CDbApiHeaderContent : public ISerializable {
  public:
    static constexpr uint32_t kVersion = 1;

    uint32_t version = kVersion;  // when it is 0, no other field is written or read
    uint32_t processId = 0;
    uint32_t threadId = 0;
    std::wstring modulePath;  // of the requesting program; empty if it cannot be had
    std::wstring caller;      // name of the calling function; empty for the text form

    // Takes everything from the current process and thread; a null caller is an empty one.
    void FillInContent(const wchar_t* callerName);

    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void Clear() override;
};

// Writes the frame (magic, length and message) and then `request`, all in one go, because each write costs a trip to
// the kernel. Returns 1 when the frame is on the pipe, or 0 after a log line; `requestSent` receives whether the
// request is, too. The cause of a failed write stays in GetLastError. Throws when memory is exhausted.
int SendDbApiHeader(CPipeClient& client, const wchar_t* caller, std::span<const uint8_t> request, bool& requestSent);

namespace wrb {

enum class DbApiHeaderStatus : uint8_t {  // DescribeDbApiHeaderStatus has a text for each
    Ok,
    TooShort,    // ends before the end of the frame
    BadMagic,    // does not begin with the magic
    BadLength,   // the header message is longer than kDbApiHeaderLimit
    BadContent,  // the message is malformed, or wants its body to be taken from a file
};

// Short text for a log line ("bad magic").
const wchar_t* DescribeDbApiHeaderStatus(DbApiHeaderStatus status) noexcept;

// The server's side: reads the frame at the start of `request`. On Ok `content` is filled and `request` is moved to the
// request that follows the frame; otherwise `content` is undefined and `request` as it was. Takes nothing from outside
// the block, whatever it holds. Never throws.
DbApiHeaderStatus ReadDbApiHeader(std::span<const uint8_t>& request, CDbApiHeaderContent& content) noexcept;

}  // namespace wrb
