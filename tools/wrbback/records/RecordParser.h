// From the bytes of one connection to the row that it becomes: the messages of the log pool, of the central-management
// agent and of the agent-command service. docs/wire-formats.md has their forms.
//
// Each takes the whole message, to its last byte, or throws a std::exception that says what is wrong with it. Nothing
// is guessed, cut or filled in: a sender that is not understood must show.
#pragma once

#include <cstdint>
#include <span>

#include "RecordTable.h"

namespace wrb {

Record ParseLogPoolMessage(std::span<const uint8_t> bytes);
Record ParseAgentEvent(std::span<const uint8_t> bytes);
Record ParseSpywareEvent(std::span<const uint8_t> bytes);

}  // namespace wrb
