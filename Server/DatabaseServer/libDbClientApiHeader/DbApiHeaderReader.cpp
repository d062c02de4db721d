#include <cstring>
#include <exception>

#include "DbApiHeader.h"
#include "MsgSerializer.h"

namespace wrb {
namespace {

uint32_t WordAt(std::span<const uint8_t> bytes, std::size_t offset) noexcept {
    uint32_t word;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

// A message may name a file that holds its body, and the reader of such a message opens and deletes that file. A header
// never needs one, so it is taken only when it starts exactly as a message in memory does.
bool IsInMemory(std::span<const uint8_t> message) noexcept {
    constexpr uint8_t kStart[] = {4, 0, 0, 0, 1, 0, 0, 0, 16, 0, 0, 0};
    constexpr std::size_t kFlagsOffset = 16;
    constexpr uint32_t kBodyInFile = 0x02;
    return message.size() >= kFlagsOffset + 4 && std::memcmp(message.data(), kStart, sizeof kStart) == 0 &&
           (WordAt(message, kFlagsOffset) & kBodyInFile) == 0;
}

bool ReadContent(std::span<const uint8_t> bytes, CDbApiHeaderContent& content) noexcept {
    try {
        CMsgSerializer message;
        if (!message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()))) {
            return false;
        }
        message >> content;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

const wchar_t* DescribeDbApiHeaderStatus(DbApiHeaderStatus status) noexcept {
    static constexpr const wchar_t* kTexts[] = {L"ok", L"too short", L"bad magic", L"bad length", L"bad content"};
    return kTexts[static_cast<std::size_t>(status)];
}

DbApiHeaderStatus ReadDbApiHeader(std::span<const uint8_t>& request, CDbApiHeaderContent& content) noexcept {
    if (request.size() < kDbApiHeaderOffset) {
        return DbApiHeaderStatus::TooShort;
    }
    if (WordAt(request, 0) != kDbApiMagic) {
        return DbApiHeaderStatus::BadMagic;
    }
    const uint32_t length = WordAt(request, 4);
    if (length > kDbApiHeaderLimit) {
        return DbApiHeaderStatus::BadLength;
    }
    if (length > request.size() - kDbApiHeaderOffset) {
        return DbApiHeaderStatus::TooShort;
    }
    const auto message = request.subspan(kDbApiHeaderOffset, length);
    if (!IsInMemory(message) || !ReadContent(message, content)) {
        return DbApiHeaderStatus::BadContent;
    }
    request = request.subspan(kDbApiHeaderOffset + length);
    return DbApiHeaderStatus::Ok;
}

}  // namespace wrb
