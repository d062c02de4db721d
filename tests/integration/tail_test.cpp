// The debug log, live.
#include <thread>

#include "BackEnd.h"
#include "DebugLog.h"
#include "Text.h"

namespace wrb::test {
namespace {

constexpr wchar_t kControl[] = L"wrbctl.exe";

TEST(Tail, ShowsTheLinesThatPassItsFilters) {
    ExpectRun(kControl, {L"tail"}, 3, "the log service does not run");
    const BackEnd backEnd;
    DebugLogSetup(L"", L"", "TEST", true);
    ExpectRun(kControl, {L"tail", L"--level", L"X"}, 2, "--level");
    ExpectRun(kControl, {L"tail", L"--thread", L"12g"}, 2, "--thread");
    const std::wstring thread = FormatWide(L"%x", static_cast<unsigned>(GetCurrentThreadId()));
    const ChildProcess tail(kControl,
                            {L"tail", L"--level", L"W", L"--text", L"needle", L"--thread", thread, L"--count", L"2"});
    ASSERT_TRUE(tail.WaitForOutput("following"));
    WRB_LOG(kLogInfo, L"%s", L"needle of too low a level");
    WRB_LOG(kLogError, L"%s", L"another text");
    std::thread([] { WRB_LOG(kLogError, L"%s", L"needle of another thread"); }).join();
    WRB_LOG(kLogWarning, L"%s", L"needle \x00e4\n one");
    WRB_LOG(kLogError, L"%s", L"needle two");
    EXPECT_EQ(tail.WaitForExit(), 0u);
    const std::string output = tail.Output();
    const std::size_t first = output.find("] [W] [");
    EXPECT_NE(first, std::string::npos) << output;
    EXPECT_NE(output.find("needle \xC3\xA4\\n one", first), std::string::npos) << output;
    EXPECT_NE(output.find("needle two"), std::string::npos) << output;
    EXPECT_EQ(output.find("too low"), std::string::npos);
    EXPECT_EQ(output.find("another"), std::string::npos);
}

}  // namespace
}  // namespace wrb::test
