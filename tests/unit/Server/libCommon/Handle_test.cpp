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

TEST(Handle, ClosesExactlyOnceWhereverItMovesAndKeepsTheLastError) {
    closed.clear();
    SetLastError(ERROR_FILE_NOT_FOUND);
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
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

}  // namespace
