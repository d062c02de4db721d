#include "CalendarTime.h"

#include <algorithm>
#include <ctime>
#include <string_view>

#include "Clock.h"
#include "DebugLog.h"
#include "Text.h"

namespace {

std::wstring_view ViewOf(const wchar_t* text) {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text);
}

int Digits(std::wstring_view text, std::size_t first, std::size_t count) {
    return wrb::ParseInt32(text.substr(std::min(first, text.size()), count));
}

int DaylightSavingNow() {
    const std::time_t now = wrb::SystemClock().CalendarSeconds();
    std::tm local{};
    return localtime_s(&local, &now) == 0 ? local.tm_isdst : 0;
}

}  // namespace

int64_t ConvertDateTime(const wchar_t* date, const wchar_t* time, int standardTime) noexcept {
    const std::wstring_view day = ViewOf(date);
    const std::wstring_view clock = ViewOf(time);
    if (day.empty()) {
        return 0;
    }
    std::tm local{};
    local.tm_year = Digits(day, 0, 4) - 1900;
    local.tm_mon = Digits(day, 4, 2) - 1;
    local.tm_mday = Digits(day, 6, 2);
    local.tm_hour = Digits(clock, 0, 2);
    local.tm_min = Digits(clock, 2, 2);
    local.tm_sec = Digits(clock, 4, 2);
    local.tm_isdst = standardTime != 0 ? 0 : DaylightSavingNow();
    WRB_LOG(kLogDebug, L"[ConvertDateTime] DST = %d", local.tm_isdst);
    if (local.tm_year < 70) {
        return 0;
    }
    const std::time_t seconds = std::mktime(&local);
    return seconds == -1 ? 0 : seconds;
}

std::wstring wrb::LocalTimeText(int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm local{};
    if (localtime_s(&local, &time) != 0) {
        return {};
    }
    return FormatWide(L"%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                      local.tm_hour, local.tm_min, local.tm_sec);
}
