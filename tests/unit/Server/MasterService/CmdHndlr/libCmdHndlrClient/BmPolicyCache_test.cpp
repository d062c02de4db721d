#include "BmPolicyCache.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "INICache.h"
#include "UniqueName.h"

namespace {

// The policies of a server whose settings are this file.
std::vector<tagBmPolicy> PoliciesOf(const std::string& text) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / wrb::test::UniqueName(L"policies");
    std::ofstream(path, std::ios::binary) << text;
    ServerIniCache().clear();
    ServerIniCache().init(path.c_str(), 1);
    const CBmPolicyCache cache;
    std::filesystem::remove(path);
    return cache.Policies();
}

TEST(BmPolicyCache, ReadsThePoliciesInTheirOrder) {
    const auto policies = PoliciesOf(
        "[VEXOR_BMPolicy]\r\nCount=3\r\n"
        "PolicyId0=7\r\nAction0=2\r\nEnable0=1\r\n"
        "PolicyId1=-5\r\nEnable1=0\r\n"
        "PolicyId2=nonsense\r\nAction2=9\r\n"
        "PolicyId3=99\r\n");
    ASSERT_EQ(policies.size(), 3u);
    const int32_t expected[][3] = {{7, 2, 1}, {-5, 0, 0}, {0, 9, 0}};
    for (std::size_t i = 0; i < policies.size(); ++i) {
        EXPECT_EQ(policies[i].policyId, expected[i][0]) << i;
        EXPECT_EQ(policies[i].action, expected[i][1]) << i;
        EXPECT_EQ(policies[i].enable, expected[i][2]) << i;
    }
}

TEST(BmPolicyCache, CountsThatAreNoCounts) {
    const struct {
        const char* ini;
        std::size_t policies;
    } kCases[] = {
        {"", 0},
        {"[VEXOR_BMPolicy]\r\nCount=-1\r\n", 0},
        {"[VEXOR_BMPolicy]\r\nCount=many\r\n", 0},
        {"[VEXOR_BMPolicy]\r\nCount=2147483647\r\n", CBmPolicyCache::kMaxPolicies},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.ini);
        EXPECT_EQ(PoliciesOf(row.ini).size(), row.policies);
    }
}

}  // namespace
