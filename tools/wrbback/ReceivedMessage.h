// Decoding the bytes of one connection, in either form of message.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "Bytes.h"

class CMsgSerializer;

namespace wrb {

// UTF-16 up to the first NUL; an odd last byte is left out.
std::wstring ReceivedText(std::span<const uint8_t> bytes);

// Bytes of a message with its body, wherever the body is.
inline constexpr uint32_t kLargestMessage = 16u << 20;

// Whether the bytes are the start of a serialized message and not a text.
bool IsSerialized(std::span<const uint8_t> bytes);

// Whether it may take a file to load them, which another program may hold.
bool MayNameFile(std::span<const uint8_t> bytes);

// Loads a serialized message; its cursor is then at the body. A body in a file is read by the rules of
// MsgSerializer.h, and the file is deleted with the content of `message`. Throws a std::exception that says what is
// wrong: the message is malformed or too long, or its file is refused.
void LoadReceivedMessage(std::span<const uint8_t> bytes, CMsgSerializer& message);

// The id of a message that is not loaded: where its answer is awaited. Empty: the message is malformed.
std::wstring ReplyPipeOf(std::span<const uint8_t> bytes) noexcept;

// For a service that takes texts alone: deletes the file that a serialized message names, by the same rules.
void DiscardSerialized(std::span<const uint8_t> bytes) noexcept;

}  // namespace wrb
