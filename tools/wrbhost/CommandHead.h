// What the host wants to know of a command before a worker runs it.
#pragma once

#include <string>
#include <string_view>

#include "CommandCatalog.h"

namespace wrb {

struct CommandHead {
    CommandLane lane = CommandLane::Quick;  // of an unknown command too: it costs nothing
    FailureAnswer failure = FailureAnswer::None;
    std::wstring replyPipe;  // empty when nothing is answered
};

// `message` as it came from the pipe; only its first characters are looked at.
CommandHead ReadCommandHead(std::string_view message);

}  // namespace wrb
