// The formats that Decode tells apart, a function each. All add fields from the cursor on and may leave the rest.
#pragma once

#include <string>

#include "Fields.h"

namespace wrb {

bool BeginsWith(std::span<const uint8_t> bytes, std::initializer_list<uint8_t> start);

// A serialized message: its header and its body.
bool IsMessage(std::span<const uint8_t> bytes);
void DecodeMessage(FieldCursor& cursor);

// The frame of the database server and the request that follows it.
bool IsFrame(std::span<const uint8_t> bytes);
void DecodeFrame(FieldCursor& cursor);

// A command text of any service, an INI text or other text. False: the bytes are no text.
bool IsText(std::span<const uint8_t> bytes);
std::string DecodeText(FieldCursor& cursor);  // returns the kind

// A file of firewall records.
bool IsFirewallLog(std::span<const uint8_t> bytes);
void DecodeFirewallLog(FieldCursor& cursor);

// A recording, with the messages and answers in it.
bool IsRecording(std::span<const uint8_t> bytes);
void DecodeRecording(FieldCursor& cursor);

// The query or form of a request to a gateway program.
bool IsForm(std::span<const uint8_t> bytes);
void DecodeForm(FieldCursor& cursor);

}  // namespace wrb
