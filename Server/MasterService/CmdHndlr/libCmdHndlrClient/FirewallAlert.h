// The firewall alert accumulator: what the agents have counted since the library was loaded.
//
// Only the sum is built. Alert notification, which would compare it with thresholds and send mail or event-log entries,
// is not: nobody is told of anything.
#pragma once

#include <cstdint>

// Adds one agent's three counts to the totals of the process and logs them. `timeStamp` is 14 digits, YYYYMMDDHHMMSS,
// and only shows in the log. Any thread; never throws.
void InsertOneLog(uint32_t first, uint32_t second, uint32_t third, const wchar_t* timeStamp) noexcept;
