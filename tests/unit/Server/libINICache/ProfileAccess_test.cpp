#include "ProfileAccess.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

class ProfileAccess : public testing::Test {
  protected:
    ProfileAccess() {
        m_folder = std::filesystem::temp_directory_path() /
                   ("wrb_profile_" + std::to_string(reinterpret_cast<std::uintptr_t>(this)));
        std::filesystem::create_directories(m_folder);
        path = (m_folder / "x.ini").string();
    }
    ~ProfileAccess() override {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::string path;
    wrb::IProfileAccess& profile = wrb::SystemProfile();

  private:
    std::filesystem::path m_folder;
};

TEST_F(ProfileAccess, NumbersReadAsTheSystemReadsThemButATextIsNoNumber) {
    std::ofstream(path) << "[S]\r\nplain=42\r\nnegative=-5\r\ntail=12abc\r\nzero=0\r\nminuszero=-0\r\ntext=abc\r\n"
                           "sign=-\r\nempty=\r\n";
    constexpr struct {
        const char* key;
        uint32_t value;
    } kCases[] = {{"plain", 42},    {"negative", static_cast<uint32_t>(-5)},
                  {"tail", 12},     {"zero", 0},
                  {"minuszero", 0}, {"text", 7},
                  {"sign", 7},      {"empty", 7},
                  {"missing", 7},   {"PLAIN", 42}};
    for (const auto& number : kCases) {
        EXPECT_EQ(profile.ReadInt("S", number.key, 7, path.c_str()), number.value) << number.key;
    }
    EXPECT_EQ(profile.ReadInt("S", "missing", -1, path.c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(profile.ReadInt("S", "plain", 7, (path + "x").c_str()), 7u);
}

TEST_F(ProfileAccess, TextsOfEveryLengthComeBackWhole) {
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
}

TEST_F(ProfileAccess, MissingFilesAndFolders) {
    EXPECT_FALSE(profile.FileExists(path.c_str()));
    std::ofstream(path) << "[S]\r\n";
    EXPECT_TRUE(profile.FileExists(path.c_str()));
    const std::string folder = std::filesystem::path(path).parent_path().string();
    EXPECT_FALSE(profile.FileExists(folder.c_str())) << "a folder is no file";
    uint32_t error = 0;
    EXPECT_EQ(profile.WriteString("S", "k", "v", (folder + "\\none\\x.ini").c_str(), error), 0);
    EXPECT_NE(error, 0u);
}

}  // namespace
