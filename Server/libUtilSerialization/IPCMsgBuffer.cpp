#include "IPCMsgBuffer.h"

#include <cwchar>
#include <limits>
#include <utility>

#include "DebugLog.h"
#include "IPCMsgBufferException.h"

namespace {

constexpr uint32_t kLengthWord = 4;       // bytes of the length in front of a value
constexpr uint32_t kSmallestElement = 4;  // of an array: every value has at least its length word

}  // namespace

CIPCMsgBuffer& CIPCMsgBuffer::operator<<(const wchar_t* text) {
    return text == nullptr ? WriteText(L"", 0) : WriteText(text, std::wcslen(text));
}

CIPCMsgBuffer& CIPCMsgBuffer::operator<<(std::span<const uint8_t> block) {
    WriteCount(block.size());
    Append(block.data(), static_cast<uint32_t>(block.size()));
    return *this;
}

// `text` is terminated, so the NUL travels with the same copy. The longest text leaves room for its length word.
CIPCMsgBuffer& CIPCMsgBuffer::WriteText(const wchar_t* text, std::size_t length) {
    constexpr std::size_t kLongest = std::numeric_limits<uint32_t>::max() / sizeof(wchar_t) - 3;
    if (length > kLongest) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    const auto bytes = static_cast<uint32_t>((length + 1) * sizeof(wchar_t));
    Append(&bytes, kLengthWord);
    Append(text, bytes);
    return *this;
}

void CIPCMsgBuffer::WriteCount(std::size_t count) {
    if (count > std::numeric_limits<uint32_t>::max()) {
        throw CIPCMsgBufferException(CIPCMsgBufferException::kOutOfRange, WRB_SOURCE_FILE, __LINE__);
    }
    const auto word = static_cast<uint32_t>(count);
    Append(&word, sizeof word);
}

uint32_t CIPCMsgBuffer::ReadCount() {
    const uint32_t count = PeekLength();
    if (count > (Remaining() - kLengthWord) / kSmallestElement) {
        ThrowUnreadable();
    }
    Take(kLengthWord);
    return count;
}

CIPCMsgBuffer& CIPCMsgBuffer::operator>>(std::wstring& text) {
    const uint32_t bytes = PeekLength();
    if (bytes == 1 || bytes > Remaining() - kLengthWord) {
        ThrowUnreadable();
    }
    const uint8_t* characters = Take(kLengthWord + bytes) + kLengthWord;
    if (bytes > 0) {
        // Copied as bytes: after a block of odd length the characters are not aligned.
        text.resize(bytes / sizeof(wchar_t) - 1);
        std::memcpy(text.data(), characters, text.size() * sizeof(wchar_t));
    }
    return *this;
}

CIPCMsgBuffer& CIPCMsgBuffer::operator>>(std::vector<uint8_t>& block) {
    const std::span<const uint8_t> bytes = TakeBlock();
    block.assign(bytes.begin(), bytes.end());
    return *this;
}

std::span<const uint8_t> CIPCMsgBuffer::TakeBlock() {
    const uint32_t bytes = PeekLength();
    if (bytes > Remaining() - kLengthWord) {
        WRB_LOG(
            kLogError,
            L"%s - CIPCMsgBuffer::operator >>() ==> size error (m_dwCurPos[%d]+iTotalBytes[%d]) > m_dwBytesUsed[%d]",
            L"CIPCMsgBuffer::operator >>", static_cast<int>(m_position + kLengthWord), static_cast<int>(bytes),
            static_cast<int>(m_used));
        ThrowUnreadable();
    }
    return {Take(kLengthWord + bytes) + kLengthWord, bytes};
}

void CIPCMsgBuffer::Empty() noexcept {
    CAccBuffer::Empty();
    m_position = 0;
}

void CIPCMsgBuffer::AttachBlock(wrb::Block block, uint32_t length, uint32_t increment) noexcept {
    CAccBuffer::AttachBlock(std::move(block), length, increment);
    m_position = 0;
}

uint32_t CIPCMsgBuffer::PeekLength() const {
    uint32_t length;
    if (kLengthWord > Remaining()) {
        ThrowUnreadable();
    }
    std::memcpy(&length, m_block.get() + m_position, sizeof length);
    return length;
}

void CIPCMsgBuffer::ThrowUnreadable() const {
    const auto code = !m_block ? CIPCMsgBufferException::kInvalidBuffer : CIPCMsgBufferException::kOutOfRange;
    throw CIPCMsgBufferException(code, WRB_SOURCE_FILE, __LINE__);
}
