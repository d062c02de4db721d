#include "ReceivedMessage.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include "MsgSerializer.h"

namespace wrb {
namespace {

// Every serialized message starts with these four bytes, no text does.
constexpr uint8_t kMessageStart[] = {4, 0, 0, 0};

}  // namespace

std::wstring ReceivedText(std::span<const uint8_t> bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    text.resize(std::min(text.size(), text.find(L'\0')));
    return text;
}

bool IsSerialized(std::span<const uint8_t> bytes) {
    return bytes.size() >= sizeof kMessageStart &&
           std::equal(std::begin(kMessageStart), std::end(kMessageStart), bytes.begin());
}

void LoadReceivedMessage(std::span<const uint8_t> bytes, CMsgSerializer& message) {
    if (!message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()))) {
        throw std::runtime_error("the file with its body is refused");
    }
    if (message.GetSize() > kLargestMessage) {
        throw std::runtime_error("longer than " + std::to_string(kLargestMessage) + " bytes");
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
