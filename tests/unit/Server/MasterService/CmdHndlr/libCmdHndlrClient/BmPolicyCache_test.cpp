#include "BmPolicyCache.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "INICache.h"
#include "UniqueName.h"

namespace {

class BmPolicyCache : public testing::Test {
  protected:
    // Binds the server's settings to a file of the test's own.
    void Write(const std::string& text) {
        std::ofstream(m_path, std::ios::binary) << text;
        ServerIniCache().clear();
        ServerIniCache().init(m_path.c_str(), 1);
    }

    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    const std::filesystem::path m_path = std::filesystem::temp_directory_path() / wrb::test::UniqueName(L"policies");
};

TEST_F(BmPolicyCache, ReadsThePoliciesInTheirOrder) {
    Write(
        "[VEXOR_BMPolicy]\r\nCount=3\r\n"
        "PolicyId0=7\r\nAction0=2\r\nEnable0=1\r\n"
        "PolicyId1=-5\r\nEnable1=0\r\n"
        "PolicyId2=nonsense\r\nAction2=9\r\n"
        "PolicyId3=99\r\n");
    const CBmPolicyCache cache;
    const auto policies = cache.Policies();
    ASSERT_EQ(policies.size(), 3u);
    const int32_t expected[][3] = {{7, 2, 1}, {-5, 0, 0}, {0, 9, 0}};
    for (std::size_t i = 0; i < policies.size(); ++i) {
        EXPECT_EQ(policies[i].policyId, expected[i][0]) << i;
        EXPECT_EQ(policies[i].action, expected[i][1]) << i;
        EXPECT_EQ(policies[i].enable, expected[i][2]) << i;
    }
}

TEST_F(BmPolicyCache, CountsThatAreNoCounts) {
    const struct {
        const char* ini;
        std::size_t policies;
    } kCases[] = {
        {"", 0},
        {"[VEXOR_BMPolicy]\r\nCount=0\r\n", 0},
        {"[VEXOR_BMPolicy]\r\nCount=-1\r\n", 0},
        {"[VEXOR_BMPolicy]\r\nCount=many\r\n", 0},
        {"[VEXOR_BMPolicy]\r\nCount=2147483647\r\n", CBmPolicyCache::kMaxPolicies},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.ini);
        Write(row.ini);
        EXPECT_EQ(CBmPolicyCache().Policies().size(), row.policies);
    }
}

}  // namespace
