#include <gtest/gtest.h>

#include <cstdlib>

#include "DbFirewall.h"

namespace {

TEST(ConvertDateTime, ReadsDigitsByPositionInTheLocalZone) {
    constexpr const char* kAhead = "AAA-3";  // three hours of UTC
    const struct {
        const wchar_t* date;
        const wchar_t* time;
        int64_t seconds;
        const char* zone = "UTC0";
    } cases[] = {
        {L"20240229", L"235959", 1709251199},
        {L"19700101", L"000001", 1},
        {L"20380119", L"031408", 2147483648},  // one more than 31 bits hold
        {L"20240301", nullptr, 1709251200},
        {L"20240301", L"12", 1709294400},              // what is missing is zero
        {L"20240301junk", L"123456junk", 1709296496},  // what is too much is not looked at
        {L"20241301", L"000000", 1735689600},          // a thirteenth month is January
        {nullptr, nullptr, 0},
        {L"19691231", L"235959", 0},
        {L"garbage!", L"garbag", 0},
        {L"20240301", L"030000", 1709251200, kAhead},
        {L"19700101", L"000000", 0, kAhead},  // before 1970 UTC
    };
    for (const auto& [date, time, seconds, zone] : cases) {
        _putenv_s("TZ", zone);
        _tzset();
        EXPECT_EQ(ConvertDateTime(date, time, 0), seconds) << (date == nullptr ? L"null" : date);
    }
    _putenv_s("TZ", "");
    _tzset();
}

}  // namespace
