#include <gtest/gtest.h>

#include <algorithm>

#include "CancelAfter.h"
#include "Handle.h"
#include "LocalPath.h"
#include "NamedMutex.h"
#include "OnThreads.h"
#include "SharedMemory.h"
#include "Text.h"
#include "UniqueName.h"

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
using Counted = wrb::UniqueHandle<CountingTraits>;

TEST(Handle, ClosesExactlyOnceWhereverItMovesAndKeepsTheLastError) {
    closed.clear();
    SetLastError(ERROR_FILE_NOT_FOUND);
    {
        Counted first(1);
        Counted second(std::move(first));
        EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): what is left behind is empty
        Counted third(3);
        third = std::move(second);
        EXPECT_EQ(closed, std::vector<int>{3}) << "what an assignment replaces is closed";
        Counted& self = third;
        third = std::move(self);
        EXPECT_EQ(third.Get(), 1);
    }
    EXPECT_EQ(closed, (std::vector<int>{3, 1}));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST(NamedMutex, IsHeldByOneThreadAtATimeAndOutlivesADeadOwner) {
    const std::wstring name = wrb::test::UniqueName();
    const wrb::KernelHandle mutex = wrb::OpenNamedMutex(name.c_str());
    const auto lockElsewhere = [&name](DWORD expected) {
        wrb::test::OnThreads(1, [&](unsigned) {
            const wrb::KernelHandle same = wrb::OpenNamedMutex(name.c_str());
            EXPECT_EQ(wrb::NamedMutexLock(same.Get(), 0).Error(), expected);
        });
    };
    {
        const wrb::NamedMutexLock lock(mutex.Get(), 0);
        EXPECT_TRUE(lock);
        lockElsewhere(ERROR_TIMEOUT);
    }
    lockElsewhere(ERROR_SUCCESS);
    wrb::test::OnThreads(1, [&mutex](unsigned) { WaitForSingleObject(mutex.Get(), INFINITE); });  // ends as its owner
    EXPECT_TRUE(wrb::NamedMutexLock(mutex.Get(), 0));
    EXPECT_EQ(wrb::NamedMutexLock(nullptr, 0).Error(), DWORD{ERROR_INVALID_HANDLE});
}

TEST(Text, FormattingIsCutToTheBufferAndTerminated) {
    for (const std::size_t length : {0u, 1u, 6u, 7u, 8u, 100u}) {
        wchar_t buffer[] = L"########|";  // 8 characters to use, then a mark
        const std::wstring text(length, L'x');
        const std::size_t written = wrb::FormatInto(buffer, 8, L"%s", text.c_str());
        EXPECT_EQ(written, std::min<std::size_t>(length, 7));
        EXPECT_EQ(std::wstring(buffer), text.substr(0, 7));
        EXPECT_EQ(buffer[8], L'|');
    }
}

TEST(Text, NumbersAreReadAsFarAsTheyGoAndClamped) {
    const std::pair<const wchar_t*, int64_t> cases[] = {
        {L"", 0},
        {L"-", 0},
        {L"+-1", 0},
        {L"\t\r\n 42 ", 42},
        {L"12.9", 12},
        {L"2147483648", 2147483648},
        {L"-2147483649", -2147483649},
        {L"9223372036854775807", INT64_MAX},
        {L"9223372036854775808", INT64_MAX},
        {L"-9223372036854775809", INT64_MIN},
        {L"99999999999999999999999999", INT64_MAX},
    };
    for (const auto& [text, number] : cases) {
        EXPECT_EQ(wrb::ParseInt64(text), number) << testing::PrintToString(text);
        EXPECT_EQ(wrb::ParseInt32(text), std::clamp<int64_t>(number, INT32_MIN, INT32_MAX))
            << testing::PrintToString(text);
    }
}

// No client comes: nothing but the limit ends the call.
TEST(CancelAfter, ACallThatWaitsForEverIsEnded) {
    const wrb::FileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + wrb::test::UniqueName()).c_str(),
                                                PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 1, 0, 0, 0, nullptr));
    for (int i = 0; i < 3; ++i) {
        const wrb::CancelAfter limit(20);
        ASSERT_TRUE(limit);
        EXPECT_FALSE(ConnectNamedPipe(pipe.Get(), nullptr));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_OPERATION_ABORTED});
        EXPECT_TRUE(limit.IsOver());
    }
}

TEST(LocalPath, OnlyFilesBelowADriveLetterPass) {
    for (const wchar_t* path : {L"C:\\", L"c:/a", L"C:\\a\\..\\.\\b\\\\c.cab", L"Z:\\.hidden\\com10\\"}) {
        EXPECT_TRUE(wrb::IsDrivePath(path)) << wrb::WideToUtf8(path);
    }
    for (const wchar_t* path :
         {L"", L"C:", L"C:a", L"a", L"\\a", L"1:\\a", L"\\\\.\\pipe\\a", L"//./pipe/a", L"\\\\?\\C:\\a",
          L"\\\\host\\share\\a", L"\\??\\C:\\a", L"C:\\nul", L"C:\\a\\Com1 .txt\\b", L"C:\\a:b", L"C:\\a\\...\\b",
          L"C:\\a ", L"C:\\a\\*", L"C:\\a\n"}) {
        EXPECT_FALSE(wrb::IsDrivePath(path)) << wrb::WideToUtf8(path);
    }
    EXPECT_FALSE(wrb::IsDrivePath({L"C:\\a\0b", 6}));
}

TEST(SharedMemory, PagesThatAreReservedOnlyCannotBeUsed) {
    for (const auto& [pages, usable] : {std::pair<DWORD, bool>{SEC_COMMIT, true}, {SEC_RESERVE, false}}) {
        const wrb::KernelHandle section(
            CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE | pages, 0, 5000, nullptr));
        const wrb::MappedView view(MapViewOfFile(section.Get(), FILE_MAP_READ, 0, 0, 0));
        ASSERT_TRUE(view);
        EXPECT_EQ(wrb::UsableBytes(view.Get()) >= 5000, usable);
    }
}

TEST(LocalPath, AFolderHoldsWhatIsBelowIt) {
    for (const wchar_t* folder : {L"C:", L"C:\\", L"c:\\UP", L"C:\\up\\"}) {
        EXPECT_TRUE(wrb::LiesBelow(L"C:\\up\\a\\b", folder)) << wrb::WideToUtf8(folder);
    }
    for (const wchar_t* folder : {L"", L"\\", L"D:", L"C:\\u", L"C:\\up\\a\\b", L"C:\\up\\a\\b\\c", L"C:\\upper"}) {
        EXPECT_FALSE(wrb::LiesBelow(L"C:\\up\\a\\b", folder)) << wrb::WideToUtf8(folder);
    }
    EXPECT_FALSE(wrb::LiesBelow(L"C:\\up\\", L"C:\\up"));
}

}  // namespace
