// The commands that end, live, in a section that the library makes at its start and keeps.
#pragma once

#include <cstdint>

#include "LiveFeed.h"

namespace wrb {

inline constexpr wchar_t kTraceSection[] = L"Global\\Calloway_Warrenby_Command_Trace";

// Texts end with a zero and are cut to fit.
struct TracedCommand {
    int64_t endMilliseconds;  // since 1970-01-01 00:00 UTC
    uint64_t answerBytes;
    uint32_t microseconds;
    uint32_t requests;   // to the database server, writes included
    uint32_t hasFailed;  // 1: the command said so, or its answer could not be sent
    wchar_t command[48];
    wchar_t uid[40];  // empty for a command without one
};

using TraceFeed = LiveFeed<TracedCommand, 1024>;

// Makes the section, or opens the one that is there. For the server's accounts. Null when the system refuses, or the
// section of that name is smaller than a feed or has no pages. The same each time, for the rest of the process.
TraceFeed* OpenTraceFeed() noexcept;

}  // namespace wrb
