#include "ProfileAccess.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "UniqueName.h"

namespace {

TEST(ProfileAccess, TextsOfEveryLengthComeBackWhole) {
    const std::string path = (std::filesystem::temp_directory_path() / wrb::test::UniqueName(L"profile")).string();
    wrb::IProfileAccess& profile = wrb::SystemProfile();
    for (const std::size_t length : {0u, 1u, 2046u, 2047u, 2048u, 5000u, 30000u}) {
        uint32_t error = 1;
        // Words of moderate length: the system may take one letter over and over for a file in Unicode.
        std::string value(length, ' ');
        for (std::size_t i = 0; i < length; ++i) {
            value[i] = "Worm,Trojan;"[i * 7 % 12];
        }
        ASSERT_NE(profile.WriteString("S", "k", value.c_str(), path.c_str(), error), 0);
        EXPECT_EQ(error, 0u);
        EXPECT_EQ(profile.ReadString("S", "k", "default", path.c_str()), value) << length;
    }
    uint32_t error = 1;
    ASSERT_NE(profile.WriteString("S", "k", nullptr, path.c_str(), error), 0);
    EXPECT_EQ(profile.ReadString("S", "k", "default", path.c_str()), "default");
    std::filesystem::remove(path);
}

}  // namespace
