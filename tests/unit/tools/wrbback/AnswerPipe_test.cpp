#include "AnswerPipe.h"

#include <gtest/gtest.h>

#include <thread>

#include "FakePipeService.h"
#include "UniqueName.h"

namespace wrb {
namespace {

constexpr AnswerLimits kShort{.connectMilliseconds = 200, .pieceMilliseconds = 200, .totalMilliseconds = 400};

std::span<const uint8_t> BytesOf(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

TEST(AnswerPipe, AnswersOfAnySizeArriveInPieces) {
    const std::wstring name = test::UniqueName();
    const test::CFakePipeService requester(name);
    const std::size_t sizes[] = {0, 1, 1023, 1024, 1025, 100'000};
    for (const std::size_t size : sizes) {
        EXPECT_EQ(WriteAnswer(name, BytesOf(test::PatternBytes(size))), 0u);
    }
    const auto received = requester.WaitFor(std::size(sizes));
    ASSERT_EQ(received.size(), std::size(sizes));
    for (std::size_t i = 0; i < received.size(); ++i) {
        EXPECT_EQ(received[i].bytes, test::PatternBytes(sizes[i]));
        for (const std::size_t piece : received[i].pieces) {
            EXPECT_LE(piece, 1024u);
        }
    }
}

TEST(AnswerPipe, ARequesterThatHasGoneOrThatHangsCostsAShortTime) {
    EXPECT_EQ(WriteAnswer(test::UniqueName(), BytesOf("x"), kShort), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));

    const std::wstring name = test::UniqueName();
    const CFileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX,
                                            PIPE_TYPE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS, 1, 1024, 1024, 50,
                                            nullptr));
    ASSERT_TRUE(pipe);
    // Nobody reads: the pipe's buffer fills.
    EXPECT_EQ(WriteAnswer(name, BytesOf(test::PatternBytes(100'000)), kShort), static_cast<DWORD>(ERROR_TIMEOUT));
    DisconnectNamedPipe(pipe.Get());

    const std::wstring busyName = test::UniqueName();
    const CFileHandle busy(CreateNamedPipeW((L"\\\\.\\pipe\\" + busyName).c_str(), PIPE_ACCESS_DUPLEX,
                                            PIPE_TYPE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS, 1, 1024, 1024, 50,
                                            nullptr));
    const CFileHandle holder = test::OpenPipeForWriting(busyName);
    ASSERT_TRUE(busy && holder);
    EXPECT_EQ(WriteAnswer(busyName, BytesOf("x"), kShort), static_cast<DWORD>(ERROR_TIMEOUT));
}

TEST(AnswerPipe, NamesThatLeadElsewhereAreRefused) {
    for (const std::wstring& name :
         {std::wstring(L"..\\C:\\file"), std::wstring(L"a\\..\\..\\b"), std::wstring(300, L'x')}) {
        EXPECT_EQ(WriteAnswer(name, {}, kShort), static_cast<DWORD>(ERROR_INVALID_NAME));
    }
}

}  // namespace
}  // namespace wrb
