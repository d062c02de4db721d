#include "AccessList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "AccessOf.h"
#include "PipeListener.h"
#include "StopEvent.h"
#include "Text.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::wstring NameOfThisAccount() {
    wchar_t name[256];
    DWORD characters = 256;
    return GetUserNameW(name, &characters) ? name : L"";
}

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
    EXPECT_TRUE(AccountSid(NameOfThisAccount()));
}

// Wine keeps a pipe's access list and does not ask it when a client opens the pipe: so the list itself is looked at.
TEST(AccessList, APipeLetsInWhomItsOptionsName) {
    PipeListenerOptions options;
    options.name = UniqueName();
    options.instances = 2;
    options.allowed = {L"S-1-5-20"};
    PipeListener listener(options, PipeListener::InOrder{0, [](std::string, const PipePeer&) { return Job(); }});
    ASSERT_TRUE(listener.Start());
    const std::string access = AccessOfPipe(options.name);
    EXPECT_THAT(access, HasSubstr(";;;SY)"));
    EXPECT_THAT(access, HasSubstr(";;;BA)"));
    EXPECT_THAT(access, HasSubstr(";;;NS)"));
    EXPECT_THAT(access, Not(HasSubstr(";;;WD)")));
    EXPECT_THAT(access, Not(HasSubstr(";;;AU)")));
}

TEST(AccessList, AStopEventIsForItsOwnersAndTheAdministrators) {
    const std::wstring name = UniqueName();
    StopEvent event;
    ASSERT_TRUE(event.Create(name.c_str()));
    const KernelHandle opened(OpenEventW(READ_CONTROL, FALSE, name.c_str()));
    const std::string access = AccessOf(opened.Get());
    EXPECT_EQ(std::ranges::count(access, '('), 3);
    EXPECT_THAT(access, HasSubstr(";;;SY)"));
    EXPECT_THAT(access, HasSubstr(";;;BA)"));
    EXPECT_EQ(StopRunning(name.c_str(), 0u), StopResult::TimedOut);
    event.Wait();
}

}  // namespace
}  // namespace wrb::test
