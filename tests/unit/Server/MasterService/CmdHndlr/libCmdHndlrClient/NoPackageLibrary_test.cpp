// Two programs of their own, for the library is bound once a process: in a folder without the package library, and in
// one where it is not signed although the server INI wants that.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "CapturedLog.h"
#include "ChildProcess.h"
#include "Handle.h"
#include "INICache.h"
#include "PackageLibrary.h"
#include "SystemText.h"
#include "TempFolder.h"

namespace {

std::wstring Tail(uint32_t error) {
    return L"\\WrbPfwCommon_64x.dll: " + wrb::WideSystemText(error);
}

#ifdef WRB_TEST_REQUIRES_SIGNATURE
constexpr char kRequires[] = "1";
constexpr wchar_t kHead[] = L"ExtractPackage - no trusted signature of ";
constexpr uint32_t kError = 0x800B0100;  // TRUST_E_NOSIGNATURE

// Before the library is bound. The test that follows tries it again.
TEST(HeldPackageLibrary, IsTriedAgainAfterAWhile) {
    const std::wstring path = wrb::test::ProgramFolder() + L"WrbPfwCommon_64x.dll";
    const wrb::FileHandle held(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    EXPECT_FALSE(wrb::ExtractPackage(INVALID_HANDLE_VALUE, L"C:\\", nullptr, nullptr));
    const auto lines = TakeCapturedTexts();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].ends_with(Tail(ERROR_SHARING_VIOLATION)));
}
#else
constexpr char kRequires[] = "0";
constexpr wchar_t kHead[] = L"ExtractPackage - cannot bind fpkExtract of ";
constexpr uint32_t kError = ERROR_MOD_NOT_FOUND;
#endif

TEST(NoPackageLibrary, EveryUnpackingFailsAndTheLogSaysSoOnce) {
    const wrb::test::TempFolder folder;
    wrb::test::WriteAll(folder / L"s.ini", std::string("[INI_SERVER_SECTION]\r\nRequireSignedLibraries=") + kRequires);
    ServerIniCache().init((folder / L"s.ini").wstring().c_str(), 6);
    std::vector<CapturedLine> lines;
    for (int i = 0; i < 3 || lines.empty(); ++i) {
        EXPECT_FALSE(wrb::ExtractPackage(INVALID_HANDLE_VALUE, L"C:\\", nullptr, nullptr));
        std::ranges::move(TakeCapturedLog(), std::back_inserter(lines));
    }
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, static_cast<uint32_t>('E'));
    EXPECT_TRUE(lines[0].text.starts_with(kHead)) << lines[0].text.size();
    EXPECT_TRUE(lines[0].text.ends_with(Tail(kError)));
}

}  // namespace
