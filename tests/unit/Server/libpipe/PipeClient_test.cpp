#include "PipeClient.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "FakePipeService.h"
#include "PipePath.h"
#include "UniqueName.h"

using namespace std::chrono_literals;
using wrb::test::CFakePipeService;
using wrb::test::UniqueName;

namespace {

std::chrono::milliseconds TimeOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

class PipeClientSizes : public testing::TestWithParam<std::size_t> {};

TEST_P(PipeClientSizes, SendsAllBytesInPiecesOfAtMost1024) {
    const std::string data = wrb::test::PatternBytes(GetParam());
    const std::wstring name = UniqueName();
    const CFakePipeService service(name);
    {
        CPipeClient client;
        ASSERT_TRUE(client.Initial(name.c_str())) << GetLastError();
        uint64_t bytes = data.size();
        EXPECT_TRUE(client.Send(data.data(), bytes)) << GetLastError();
        EXPECT_EQ(bytes, data.size());
    }
    const auto messages = service.WaitFor(1);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_TRUE(messages[0].bytes == data);
    std::vector<std::size_t> pieces(data.size() / 1024, 1024);
    if (data.size() % 1024 != 0) {
        pieces.push_back(data.size() % 1024);
    }
    EXPECT_EQ(messages[0].pieces, pieces);
}

INSTANTIATE_TEST_SUITE_P(Edges, PipeClientSizes,
                         testing::Values(0, 1, 1023, 1024, 1025, 511999, 512000, 512001, 2'000'000));

// The names come from the network. One that the system would resolve to a file must not reach that file.
TEST(PipeClient, RefusesNamesThatLeaveThePipeNamespace) {
    const struct {
        std::wstring name;
        DWORD error;
    } cases[] = {
        {L"..", ERROR_INVALID_NAME},
        {L"..\\C:\\windows\\win.ini", ERROR_INVALID_NAME},
        {L"a/../../C:/windows/win.ini", ERROR_INVALID_NAME},
        {L"a\\.. \\b", ERROR_INVALID_NAME},
        {L"..\\UNC\\host\\pipe\\x", ERROR_INVALID_NAME},
        {std::wstring(251, L'x'), ERROR_FILENAME_EXCED_RANGE},
        {L"Global\\..absent..", ERROR_FILE_NOT_FOUND},  // dots within a part are a name like any other
    };
    for (const auto& row : cases) {
        CPipeClient client;
        EXPECT_FALSE(client.Initial(row.name.c_str()));
        EXPECT_EQ(GetLastError(), row.error) << testing::PrintToString(row.name);
    }
}

TEST(PipeClient, GivesABusyPipeUpAfterTheTimeOutOfItsServer) {
    const std::wstring name = UniqueName();
    const wrb::CFileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX,
                                                 PIPE_TYPE_MESSAGE, 1, 1024, 1024, 100, nullptr));
    CPipeClient first;
    ASSERT_TRUE(first.Initial(name.c_str()));
    CPipeClient second;
    const auto elapsed = TimeOf([&] {
        EXPECT_FALSE(second.Initial(name.c_str()));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SEM_TIMEOUT});
    });
    EXPECT_GE(elapsed, 90ms);
    EXPECT_LT(elapsed, 5s);
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
