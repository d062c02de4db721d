// Dates and times as firewall logs carry them.
#pragma once

#include <cstdint>

// Local date and time as digits to calendar seconds (since 1970-01-01 00:00 UTC): the date is year, month, day in eight
// digits, the time hours, minutes, seconds in six; an empty time is 00:00:00. With `standardTime` 0 the daylight-saving
// rule is the one in force now, as on the agent that made the text; otherwise standard time. Returns 0 for an empty
// date, a year before 1970 and a time that cannot be represented. Null texts are empty. Never throws.
int64_t ConvertDateTime(const wchar_t* date, const wchar_t* time, int standardTime) noexcept;
