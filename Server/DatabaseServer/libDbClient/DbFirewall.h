// Firewall data of one agent.
#pragma once

#include <array>
#include <cstdint>

// An agent's firewall event counters. `number` and the counters are stored as given; `timeStamp` is 14 digits, a date
// and a time as ConvertDateTime takes them, and is sent as calendar seconds. True once the bytes are on the pipe.
bool dbSetCfwLogCountW(const wchar_t* uid, int32_t number, const std::array<uint32_t, 6>& counters,
                       const wchar_t* timeStamp) noexcept;

// The firewall policy that the agent has in force. True once the bytes are on the pipe.
bool dbSetCfwActIdW(const wchar_t* uid, const wchar_t* policyId) noexcept;
