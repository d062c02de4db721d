// A program of its own, in a folder without the package library.
#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "PackageLibrary.h"

namespace {

TEST(NoPackageLibrary, EveryUnpackingFailsAndTheLogSaysSoOnce) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(wrb::ExtractPackage(INVALID_HANDLE_VALUE, L"C:\\", nullptr, nullptr));
    }
    const auto lines = TakeCapturedLog();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, static_cast<uint32_t>('E'));
    EXPECT_TRUE(lines[0].text.starts_with(L"ExtractPackage - cannot bind fpkExtract of ")) << lines[0].text.size();
    EXPECT_TRUE(lines[0].text.ends_with(L"WrbPfwCommon_64x.dll, err=126"));
}

}  // namespace
