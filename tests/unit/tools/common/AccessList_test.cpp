#include "AccessList.h"

#include <gmock/gmock.h>

#include "AccessOf.h"
#include "StopEvent.h"
#include "Text.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

TEST(AccessList, AccountsAreKnownBySidAndByName) {
    const struct {
        std::wstring account;
        std::optional<std::wstring> sid;
    } kCases[] = {
        {L"S-1-5-32-545", L"S-1-5-32-545"},
        {L"NT AUTHORITY\\NETWORK SERVICE", L"S-1-5-20"},
        {L"Everyone", L"S-1-1-0"},
        {L"", std::nullopt},
        {L"nobody of that name", std::nullopt},
        {L"S-1-5-32-545)(A;;GA;;;WD", std::nullopt},
    };
    for (const auto& [account, sid] : kCases) {
        SCOPED_TRACE(WideToUtf8(account));
        EXPECT_EQ(AccountSid(account), sid);
    }
    wchar_t name[256];
    DWORD characters = 256;
    EXPECT_TRUE(GetUserNameW(name, &characters) && AccountSid(name));
}

TEST(AccessList, AStopEventIsForItsOwnersAndTheAdministrators) {
    const std::wstring name = UniqueName();
    StopEvent event;
    ASSERT_TRUE(event.Create(name.c_str()));
    const KernelHandle opened(OpenEventW(READ_CONTROL, FALSE, name.c_str()));
    const std::string access = AccessOf(opened.Get());
    EXPECT_EQ(std::ranges::count(access, '('), 3);
    EXPECT_THAT(access, testing::HasSubstr(";;;SY)"));
    EXPECT_THAT(access, testing::HasSubstr(";;;BA)"));
    EXPECT_EQ(StopRunning(name.c_str(), 0u), StopResult::TimedOut);
    event.Wait();
}

TEST(StopEvent, IsFoundFromASessionOtherThanThatOfTheServices) {
    const std::wstring name = UniqueName();
    EXPECT_EQ(RunningProcess(name.c_str()), 0u);
    StopEvent event;
    ASSERT_TRUE(event.Create((L"Global\\" + name).c_str()));
    EXPECT_EQ(RunningProcess(name.c_str()), GetCurrentProcessId());
    EXPECT_EQ(StopRunning(name.c_str(), 0u), StopResult::TimedOut);
    event.Wait();
}

}  // namespace
}  // namespace wrb::test
