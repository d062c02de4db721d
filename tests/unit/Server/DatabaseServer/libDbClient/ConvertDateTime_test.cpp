#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "CapturedLog.h"
#include "DbFirewall.h"

namespace {

// Moves the process to a zone without daylight saving, where calendar seconds are known.
class ConvertDateTimeTest : public testing::Test {
  protected:
    void SetUp() override { SetZone("UTC0"); }
    void TearDown() override { SetZone(""); }

    static void SetZone(const char* zone) {
        _putenv_s("TZ", zone);
        _tzset();
    }
};

TEST_F(ConvertDateTimeTest, ReadsDigitsByPosition) {
    const struct {
        const wchar_t* date;
        const wchar_t* time;
        int64_t seconds;
    } cases[] = {
        {L"20240229", L"235959", 1709251199},
        {L"20000101", L"000001", 946684801},
        {L"19700101", L"000001", 1},
        {L"20380119", L"031408", 2147483648},  // one more than 31 bits hold
        {L"20240301", L"", 1709251200},
        {L"20240301", nullptr, 1709251200},
        {L"20240301", L"12", 1709294400},              // what is missing is zero
        {L"20240301junk", L"123456junk", 1709296496},  // what is too much is not looked at
        {L"20241301", L"000000", 1735689600},          // a thirteenth month is January
        {L"", L"123456", 0},
        {nullptr, nullptr, 0},
        {L"19691231", L"235959", 0},
        {L"garbage!", L"garbag", 0},
        {L"-1230101", L"000000", 0},
        {L"19700101", L"000000", 0},
    };
    for (const auto& [date, time, seconds] : cases) {
        EXPECT_EQ(ConvertDateTime(date, time, 0), seconds) << (date == nullptr ? L"null" : date);
    }
}

TEST_F(ConvertDateTimeTest, TakesTheLocalZone) {
    SetZone("AAA-3");  // three hours ahead of UTC
    EXPECT_EQ(ConvertDateTime(L"20240301", L"030000", 0), 1709251200);
    EXPECT_EQ(ConvertDateTime(L"19700101", L"000000", 0), 0) << "before 1970 UTC";
}

TEST_F(ConvertDateTimeTest, LogsTheDaylightSavingInForce) {
    const auto line = [](int standardTime) {
        TakeCapturedLog();
        ConvertDateTime(L"20240301", L"", standardTime);
        return TakeCapturedLog();
    };
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_s(&local, &now);
    const auto expected = [](int dst) {
        return testing::ElementsAre(tagCapturedLine{'D', L"[ConvertDateTime] DST = " + std::to_wstring(dst)});
    };
    EXPECT_THAT(line(0), expected(local.tm_isdst));
    EXPECT_THAT(line(1), expected(0));
}

}  // namespace
