#include "ReceivedMessage.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "MsgSerializer.h"

namespace wrb {
namespace {

// Every serialized message starts with these four bytes, no text does.
constexpr uint8_t kMessageStart[] = {4, 0, 0, 0};

// Where the flags of the control block are, if it has any, and the one of a body in a file.
constexpr std::size_t kFlags = 16;
constexpr uint8_t kBodyInFile = 0x02;

}  // namespace

std::wstring ReceivedText(std::span<const uint8_t> bytes) {
    std::wstring text = WideTextOf(bytes);
    text.resize(std::min(text.size(), text.find(L'\0')));
    return text;
}

bool IsSerialized(std::span<const uint8_t> bytes) {
    return bytes.size() >= sizeof kMessageStart &&
           std::equal(std::begin(kMessageStart), std::end(kMessageStart), bytes.begin());
}

bool MayNameFile(std::span<const uint8_t> bytes) {
    return IsSerialized(bytes) && bytes.size() > kFlags && (bytes[kFlags] & kBodyInFile) != 0;
}

void LoadReceivedMessage(std::span<const uint8_t> bytes, CMsgSerializer& message) {
    message.SetMapFrom(kLargestMessage);  // a file that is refused for its size is not read
    if (!message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()))) {
        throw std::runtime_error("the file with its body is refused");
    }
    if (message.GetSize() > kLargestMessage) {
        throw std::runtime_error("longer than " + std::to_string(kLargestMessage) + " bytes");
    }
}

std::wstring ReplyPipeOf(std::span<const uint8_t> bytes) noexcept {
    try {
        std::vector<uint8_t> header(bytes.begin(), bytes.end());
        header.at(kFlags) &= static_cast<uint8_t>(~kBodyInFile);
        CMsgSerializer message;
        message.Load(header.data(), static_cast<uint32_t>(header.size()));
        return message.Id();
    } catch (const std::exception&) {
        return {};
    }
}

void DiscardSerialized(std::span<const uint8_t> bytes) noexcept {
    if (!IsSerialized(bytes)) {
        return;
    }
    try {
        CMsgSerializer message;
        LoadReceivedMessage(bytes, message);
    } catch (const std::exception&) {  // the caller refuses the message in any case
    }
}

}  // namespace wrb
