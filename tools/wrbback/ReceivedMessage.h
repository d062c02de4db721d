// Decoding the bytes of one connection, in either form of message.
#pragma once

#include <cstdint>
#include <span>
#include <string>

class CMsgSerializer;

namespace wrb {

// UTF-16 up to the first NUL; an odd last byte is left out.
std::wstring ReceivedText(std::span<const uint8_t> bytes);

// Loads a serialized message; its cursor then stands at the body. No message that this back end is sent is large, so
// one whose body is in a file is refused: it would have us read, and delete, that file. Throws a std::exception that
// says what is wrong.
void LoadReceivedMessage(std::span<const uint8_t> bytes, CMsgSerializer& message);

}  // namespace wrb
