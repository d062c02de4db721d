// CIPCMsgBuffer: typed values in a growing buffer, and a cursor that reads them back.
//
// docs/wire-formats.md has the form of each value. A null text is written as empty.
//
// Readers take the fixed width of an integer or bool whatever its length word says. Text of length 0 leaves the target
// as it was; otherwise length / 2 - 1 characters are taken and `length` bytes consumed, so an odd length loses its last
// byte; length 1 cannot hold the terminator and is refused.
//
// Errors: a read that would pass the last byte throws CIPCMsgBufferException kOutOfRange, or kInvalidBuffer when there
// is no block at all; the cursor then stays before the value. Nothing is allocated for a length or a count
// before the bytes that it promises have been found. One thread at a time.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "AccBuffer.h"

namespace wrb {

// A single character is no number, whatever its width.
template <typename T>
concept Character = std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;

// What travels as one integer or bool value. 64-bit numbers and characters have no wire form.
template <typename T>
concept WireNumber = std::integral<T> && sizeof(T) <= 4 && !Character<T>;

}  // namespace wrb

class CIPCMsgBuffer : public CAccBuffer {
  public:
    using CAccBuffer::CAccBuffer;

    template <wrb::WireNumber T>
    CIPCMsgBuffer& operator<<(T value);
    CIPCMsgBuffer& operator<<(const std::wstring& text) { return WriteText(text.c_str(), text.size()); }
    CIPCMsgBuffer& operator<<(const wchar_t* text);
    CIPCMsgBuffer& operator<<(std::span<const uint8_t> block);

    template <wrb::WireNumber T>
    CIPCMsgBuffer& operator>>(T& value);
    CIPCMsgBuffer& operator>>(std::wstring& text);
    CIPCMsgBuffer& operator>>(std::vector<uint8_t>& block);

    void WriteCount(std::size_t count);

    // Throws kOutOfRange for a count that the bytes still unread cannot hold.
    uint32_t ReadCount();

    // Bytes still unread.
    uint32_t Remaining() const noexcept { return m_position < m_used ? m_used - m_position : 0; }

  protected:
    // As the functions of the base class, with the cursor at the first byte.
    void Empty() noexcept;
    void AttachBlock(wrb::Block block, uint32_t length, uint32_t increment) noexcept;

    // The block at the cursor, consumed. The view is valid until the content changes.
    std::span<const uint8_t> TakeBlock();

    uint32_t m_position = 0;  // of the cursor

  private:
    CIPCMsgBuffer& WriteText(const wchar_t* text, std::size_t length);
    const uint8_t* Take(uint32_t count);
    uint32_t PeekLength() const;
    [[noreturn]] void ThrowUnreadable() const;
};

// A length word and a value that fits 32 bits, written as one piece of constant size.
template <wrb::WireNumber T>
CIPCMsgBuffer& CIPCMsgBuffer::operator<<(T value) {
    if constexpr (sizeof(T) == 1) {
        const uint32_t words[] = {1, static_cast<uint8_t>(value)};
        Append(words, sizeof words);
    } else {
        uint8_t bytes[4 + sizeof(T)] = {sizeof(T)};
        std::memcpy(bytes + 4, &value, sizeof(T));
        Append(bytes, sizeof bytes);
    }
    return *this;
}

template <wrb::WireNumber T>
CIPCMsgBuffer& CIPCMsgBuffer::operator>>(T& value) {
    constexpr uint32_t kWidth = sizeof(T) == 1 ? 4 : sizeof(T);
    const uint8_t* bytes = Take(4 + kWidth) + 4;
    if constexpr (sizeof(T) == 1) {
        uint32_t word;
        std::memcpy(&word, bytes, sizeof word);
        value = static_cast<T>(word);  // a bool becomes true for every word but 0
    } else {
        std::memcpy(&value, bytes, sizeof value);
    }
    return *this;
}

inline const uint8_t* CIPCMsgBuffer::Take(uint32_t count) {
    if (count > Remaining()) {
        ThrowUnreadable();
    }
    m_position += count;
    return m_block.get() + m_position - count;
}
