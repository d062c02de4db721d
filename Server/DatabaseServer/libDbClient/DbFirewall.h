// Firewall data of one agent, and the conversion of the dates that firewall logs carry.
#pragma once

#include <array>
#include <cstdint>

// Local date and time as digits to calendar seconds (since 1970-01-01 00:00 UTC): the date is year, month, day in eight
// digits, the time hours, minutes, seconds in six; an empty time is 00:00:00. With `standardTime` 0 the daylight-saving
// rule is the one in force now, as on the agent that made the text; otherwise standard time. Returns 0 for an empty
// date, a year before 1970 and a time that cannot be represented. Null texts are empty. Never throws.
int64_t ConvertDateTime(const wchar_t* date, const wchar_t* time, int standardTime) noexcept;

// An agent's firewall event counters. `number` and the counters are stored as given; `timeStamp` is 14 digits, a date
// and a time as above, and is sent as calendar seconds. True once the bytes are on the pipe.
bool dbSetCfwLogCountW(const wchar_t* uid, int32_t number, const std::array<uint32_t, 6>& counters,
                       const wchar_t* timeStamp) noexcept;

// The firewall policy that the agent has in force. True once the bytes are on the pipe.
bool dbSetCfwActIdW(const wchar_t* uid, const wchar_t* policyId) noexcept;
