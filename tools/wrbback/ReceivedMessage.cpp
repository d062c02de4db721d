#include "ReceivedMessage.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "MsgSerializer.h"

namespace wrb {
namespace {

// The header keeps this flag where a message says that its body is in a file.
constexpr std::size_t kMessageFlags = 16;
constexpr uint8_t kBodyInFile = 0x02;

}  // namespace

std::wstring ReceivedText(std::span<const uint8_t> bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    text.resize(std::min(text.size(), text.find(L'\0')));
    return text;
}

void LoadReceivedMessage(std::span<const uint8_t> bytes, CMsgSerializer& message) {
    if (bytes.size() <= kMessageFlags || (bytes[kMessageFlags] & kBodyInFile) != 0) {
        throw std::runtime_error("a message without its body");
    }
    if (!message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()))) {
        throw std::runtime_error("a message that cannot be loaded");
    }
}

}  // namespace wrb
