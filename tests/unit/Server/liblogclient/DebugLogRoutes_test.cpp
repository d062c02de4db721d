// Where a line goes when it does not, or not only, go to the log service.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "DebugLog.h"
#include "FakeLogService.h"
#include "Handle.h"
#include "Text.h"
#include "UniqueName.h"

namespace {

constexpr wchar_t kLibrary[] = L"debug_library_double.dll";

class DebugLogRoutes : public testing::Test {
  protected:
    ~DebugLogRoutes() override {
        DebugLogAttachMirror(nullptr);
        DebugLogSetup(L"", L"", "", false);
    }
};

std::wstring Told(HMODULE library) {
    using Function = const wchar_t*();
    auto* const told = reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(library, "Told")));
    return told == nullptr ? L"nothing to ask" : told();
}

TEST_F(DebugLogRoutes, TheDebugLibraryIsUsedWhenTheInternalFlagIsClear) {
    const wrb::CModuleHandle library(LoadLibraryW(kLibrary));
    ASSERT_TRUE(library);
    EXPECT_EQ(DebugLogSetup(L"C:\\debug.ini", kLibrary, "TAG", false), 1);
    EXPECT_EQ(Told(library.Get()), L"init <C:\\debug.ini><><>");
    DebugLog('W', L"x.cpp", 3, L"%d", 4);
    EXPECT_EQ(Told(library.Get()), L"trace x.cpp 3 87 [TAG][liblogclient_test.exe]4");

    // The paths are cut at 260 characters.
    EXPECT_EQ(DebugLogSetup(std::wstring(300, L'i').c_str(), kLibrary, "TAG", false), 1);
    EXPECT_EQ(Told(library.Get()), L"init <" + std::wstring(260, L'i') + L"><><>");

    // With the flag set, the library is left alone.
    EXPECT_EQ(DebugLogSetup(L"other.ini", kLibrary, "TAG", true), 0);
    SetLastError(ERROR_CRC);
    DebugLog('W', L"x.cpp", 3, L"lost: no service runs");
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CRC});
    EXPECT_EQ(Told(library.Get()), L"init <" + std::wstring(260, L'i') + L"><><>");
}

TEST_F(DebugLogRoutes, TheDebugLibraryIsUnloadedByTheNextSetUp) {
    ASSERT_EQ(GetModuleHandleW(kLibrary), nullptr);
    ASSERT_EQ(DebugLogSetup(L"", kLibrary, "TAG", false), 1);
    EXPECT_NE(GetModuleHandleW(kLibrary), nullptr);
    DebugLogSetup(L"", L"", "TAG", true);
    EXPECT_EQ(GetModuleHandleW(kLibrary), nullptr);
}

TEST_F(DebugLogRoutes, ALibraryThatIsNoneLosesTheLines) {
    for (const wchar_t* path : {L"", L"no such library.dll", L"kernel32.dll", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(DebugLogSetup(L"debug.ini", path, "TAG", false), 0);
        DebugLog('E', L"x.cpp", 1, L"nobody listens");
    }
}

std::wstring ReadWide(const std::wstring& path) {
    std::ifstream file(wrb::WideToAnsi(path), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return wrb::test::tagReceived{bytes, {}}.Text();
}

TEST_F(DebugLogRoutes, AMirrorFileGetsEveryAdmittedLineAsWell) {
    const std::wstring path = wrb::test::UniqueName(L"mirror") + L".log";
    const wrb::test::CFakeLogService service("TAG");
    ASSERT_TRUE(DebugLogAttachMirror(path.c_str()));
    DebugLog('E', L"Server\\x.cpp", 12, L"first");
    DebugLogSetup(L"", L"", "TAG", true);  // the mirror stays
    DebugLog('E', L"Server\\x.cpp", 13, L"%s", std::wstring(5'000, L'z').c_str());
    ASSERT_TRUE(DebugLogAttachMirror(nullptr));
    DebugLog('E', L"Server\\x.cpp", 14, L"not any more");

    const std::wstring pattern = L"\xFEFF\\d{4} \\d\\d/\\d\\d \\d\\d:\\d\\d:\\d\\d \\[" +
                                 wrb::FormatWide(L"%04x : %04x", GetCurrentProcessId(), GetCurrentThreadId()) +
                                 L"\\] \\[TAG\\]\\[liblogclient_test.exe\\]first - \\[Server\\\\x.cpp\\(12\\)\\]\r\n"
                                 L"[^z]*z+ - \\[Server\\\\x.cpp\\(13\\)\\]\r\n";
    EXPECT_TRUE(std::regex_match(ReadWide(path), std::wregex(pattern))) << wrb::WideToAnsi(ReadWide(path));
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

TEST_F(DebugLogRoutes, AMirrorThatCannotBeOpenedIsRefused) {
    EXPECT_FALSE(DebugLogAttachMirror(L"no such folder\\mirror.log"));
    DebugLog('E', L"x.cpp", 1, L"goes on");
}

}  // namespace
