// The firewall alert totals: what the agents have counted since the library was loaded. Nothing compares them with
// thresholds or sends notifications yet.
#pragma once

#include <cstdint>

// Adds one agent's three counts to the totals of the process and logs them. `timeStamp` is 14 digits, YYYYMMDDHHMMSS,
// for the log only. Any thread; never throws.
void InsertOneLog(uint32_t first, uint32_t second, uint32_t third, const wchar_t* timeStamp) noexcept;
