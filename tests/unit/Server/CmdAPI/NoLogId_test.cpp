// A restore log whose id cannot be made.
#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "FakePipeService.h"
#include "LogId.h"
#include "ServicePipes.h"
#include "cmdlog_OutputCmd.h"

// The linker takes this one and leaves the real one in its library.
bool cwCreateGUID(wchar_t*, std::size_t) {
    return false;
}

TEST(NoLogId, NothingIsSent) {
    const wrb::test::FakePipeService pool(wrb::kLogPoolPipe);
    EXPECT_EQ(dbSetRestoreLogW(L"uid", 1, 2), 0);
    EXPECT_EQ(TakeCapturedLog(), (std::vector<CapturedLine>{{'E', L"dbSetRestoreLogW - Fail to create log ID"}}));
    EXPECT_EQ(cmdlog_SendCfwLog({}), 1);
    EXPECT_EQ(pool.WaitFor(1).size(), 1u) << "only the message that needs no id";
}
