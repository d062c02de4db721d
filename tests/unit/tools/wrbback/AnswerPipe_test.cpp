#include "AnswerPipe.h"

#include <gtest/gtest.h>

#include "FakePipeService.h"
#include "UniqueName.h"

namespace wrb {
namespace {

DWORD Answer(const std::wstring& name, std::size_t size) {
    const std::vector<uint8_t> bytes(size);
    return WriteAnswer(name, bytes, {.connectMilliseconds = 200, .pieceMilliseconds = 200, .totalMilliseconds = 400});
}

TEST(AnswerPipe, AnAnswerArrivesInPiecesOfThePipesSize) {
    const std::wstring name = test::UniqueName();
    const test::FakePipeService requester(name);
    EXPECT_EQ(WriteAnswer(name, std::vector<uint8_t>(2049), {}), 0u);
    EXPECT_EQ(requester.WaitFor(1).at(0).pieces, (std::vector<std::size_t>{1024, 1024, 1}));
}

TEST(AnswerPipe, ARequesterThatHasGoneOrDoesNotReadCostsAShortTime) {
    const std::wstring name = test::UniqueName();
    EXPECT_EQ(Answer(name, 1), DWORD{ERROR_FILE_NOT_FOUND});
    const FileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 1,
                                           1024, 1024, 50, nullptr));
    EXPECT_EQ(Answer(name, 100'000), DWORD{ERROR_TIMEOUT}) << "the buffer is full";
    EXPECT_EQ(Answer(name, 1), DWORD{ERROR_TIMEOUT}) << "busy: nobody has let go of the connection";
}

TEST(AnswerPipe, NamesThatLeadElsewhereAreRefused) {
    for (const std::wstring& name :
         {std::wstring(L"..\\C:\\file"), std::wstring(L"a\\..\\..\\b"), std::wstring(300, L'x')}) {
        EXPECT_EQ(Answer(name, 1), DWORD{ERROR_INVALID_NAME});
    }
    EXPECT_EQ(Answer(L"//LOG_servernamepipe. ", 1), DWORD{ERROR_ACCESS_DENIED}) << "a service's";
}

}  // namespace
}  // namespace wrb
