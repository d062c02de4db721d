#include "Handle.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> closed;

struct CountingTraits {
    using Type = int;
    static int Empty() noexcept { return -1; }
    static void Close(int handle) noexcept {
        closed.push_back(handle);
        SetLastError(ERROR_CRC);  // a closer may spoil it
    }
};
using CCounted = wrb::CUniqueHandle<CountingTraits>;

class Handle : public testing::Test {
  protected:
    Handle() { closed.clear(); }
};

TEST_F(Handle, ClosesExactlyOnceWhereverItMoves) {
    {
        CCounted first(1);
        CCounted second(std::move(first));
        EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): what is left behind is empty
        CCounted third(3);
        third = std::move(second);
        EXPECT_EQ(closed, std::vector<int>{3}) << "what an assignment replaces is closed";
        CCounted& self = third;
        third = std::move(self);
        EXPECT_EQ(third.Get(), 1);
    }
    EXPECT_EQ(closed, (std::vector<int>{3, 1}));
}

TEST_F(Handle, ReleaseGivesUpResetAndReceiveClose) {
    CCounted handle(1);
    EXPECT_EQ(handle.Release(), 1);
    handle.Reset(2);
    handle.Reset();
    *handle.Receive() = 3;
    *handle.Receive() = 4;
    EXPECT_EQ(closed, (std::vector<int>{2, 3}));
    EXPECT_EQ(handle.Get(), 4);
}

TEST_F(Handle, ClosingKeepsTheLastError) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    { const CCounted handle(1); }
    EXPECT_EQ(closed.size(), 1u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(Handle, TheEmptyValueDependsOnTheKind) {
    EXPECT_FALSE(wrb::CFileHandle(INVALID_HANDLE_VALUE));
    EXPECT_FALSE(wrb::CKernelHandle(nullptr));
    const wrb::CKernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    EXPECT_TRUE(event);
}

}  // namespace
