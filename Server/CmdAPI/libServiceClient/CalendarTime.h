// Calendar times as texts, and texts as calendar times: seconds since 1970-01-01 00:00 UTC.
#pragma once

#include <cstdint>
#include <string>

// Local date and time, as firewall logs carry them, to calendar seconds: the date is year, month, day in eight digits,
// the time hours, minutes, seconds in six; an empty time is 00:00:00. With `standardTime` 0 the daylight-saving rule is
// the one in force now, as on the agent that made the text; otherwise standard time. Returns 0 for an empty date, a
// year before 1970 and a time that cannot be represented. Null texts are empty. Never throws.
int64_t ConvertDateTime(const wchar_t* date, const wchar_t* time, int standardTime) noexcept;

namespace wrb {

// Local time as "2024-01-31 23:59:59"; seconds that the calendar cannot hold are an empty text.
std::wstring LocalTimeText(int64_t seconds);

}  // namespace wrb
