#include "PipeClient.h"

#include <gtest/gtest.h>

#include "FakePipeService.h"
#include "PipePath.h"
#include "UniqueName.h"

using wrb::test::CFakePipeService;
using wrb::test::UniqueName;

namespace {

TEST(PipeClient, SendsAllBytesInPiecesOfAtMost1024) {
    for (const std::size_t size : {0u, 1u, 1023u, 1024u, 1025u, 511'999u, 512'000u, 512'001u, 2'000'000u}) {
        const std::string data = wrb::test::PatternBytes(size);
        const std::wstring name = UniqueName();
        const CFakePipeService service(name);
        CPipeClient client;
        ASSERT_TRUE(client.Initial(name.c_str())) << GetLastError();
        uint64_t bytes = size;
        EXPECT_TRUE(client.Send(data.data(), bytes)) << GetLastError();
        EXPECT_EQ(bytes, size);
        client.Close();
        const auto message = service.WaitFor(1).at(0);
        EXPECT_TRUE(message.bytes == data) << size;
        std::vector<std::size_t> pieces((size + 1023) / 1024, 1024);
        if (size % 1024 != 0) {
            pieces.back() = size % 1024;
        }
        EXPECT_EQ(message.pieces, pieces);
    }
}

// The names come from the network. One that the system would resolve to a file must not reach that file.
TEST(PipeClient, RefusesNamesThatLeaveThePipeNamespace) {
    const std::pair<std::wstring, DWORD> cases[] = {
        {L"..", ERROR_INVALID_NAME},
        {L"..\\C:\\windows\\win.ini", ERROR_INVALID_NAME},
        {L"a/../../C:/windows/win.ini", ERROR_INVALID_NAME},
        {L"a\\.. \\b", ERROR_INVALID_NAME},
        {L"..\\UNC\\host\\pipe\\x", ERROR_INVALID_NAME},
        {std::wstring(251, L'x'), ERROR_FILENAME_EXCED_RANGE},
        {L"Global\\..absent..", ERROR_FILE_NOT_FOUND},  // dots within a part are a name like any other
    };
    for (const auto& [name, error] : cases) {
        CPipeClient client;
        EXPECT_FALSE(client.Initial(name.c_str()));
        EXPECT_EQ(GetLastError(), error) << testing::PrintToString(name);
    }
}

TEST(PipeClient, GivesABusyPipeUpAfterTheTimeOutOfItsServer) {
    const std::wstring name = UniqueName();
    const wrb::CFileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX,
                                                 PIPE_TYPE_MESSAGE, 1, 1024, 1024, 100, nullptr));
    CPipeClient first;
    ASSERT_TRUE(first.Initial(name.c_str()));
    CPipeClient second;
    const ULONGLONG start = GetTickCount64();
    EXPECT_FALSE(second.Initial(name.c_str()));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SEM_TIMEOUT});
    EXPECT_GE(GetTickCount64() - start, 80u);
    EXPECT_LT(GetTickCount64() - start, 5'000u);
}

TEST(PipeClient, ASendToAReaderThatHasGoneFailsAndTellsWhatWasWritten) {
    const std::wstring name = UniqueName();
    auto service = std::make_unique<CFakePipeService>(name);
    CPipeClient client;
    ASSERT_TRUE(client.Initial(name.c_str()));
    service.reset();
    const std::string data(5000, 'x');
    uint64_t bytes = data.size();
    EXPECT_FALSE(client.Send(data.data(), bytes));
    EXPECT_NE(GetLastError(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(bytes, 0u);
}

}  // namespace
