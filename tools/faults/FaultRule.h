// One fault: what goes wrong with a command of the database server.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "DbCommands.h"

namespace wrb {

enum class FaultKind : uint32_t {
    None,
    Delay,     // it waits first
    Close,     // an answer without a byte
    Garbage,   // an answer of the same length, at least 64 bytes, of other bytes
    Truncate,  // the first half of the answer
    Silence,   // no answer; a write is not carried out
};

struct FaultRule {
    std::optional<DbCommand> command;  // nothing: every command
    FaultKind kind = FaultKind::None;
    uint32_t milliseconds = 0;  // of a delay
    uint32_t every = 1;         // of so many requests the last one
};

// A write has no answer to spoil: it can be delayed and silenced.
bool CanFail(DbCommand command, FaultKind kind) noexcept;

// The answer as the fault leaves it; nothing when none is sent. Not for a delay.
std::optional<std::vector<uint8_t>> SpoiltAnswer(FaultKind kind, std::span<const uint8_t> answer);

// "COMMAND:KIND[=TIME][:every=N]", COMMAND being "*" for every command and TIME "2s" or "500ms". Throws
// std::invalid_argument, whose text says what is wrong.
FaultRule ParseFaultRule(std::string_view text);

// The text that gives the rule again.
std::string FaultText(const FaultRule& rule);

}  // namespace wrb
