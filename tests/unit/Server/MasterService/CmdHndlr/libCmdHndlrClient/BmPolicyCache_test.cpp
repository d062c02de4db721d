#include "BmPolicyCache.h"

#include <gtest/gtest.h>

#include <tuple>

#include "INICache.h"
#include "TempFolder.h"

namespace {

TEST(BmPolicyCache, ReadsAsManyPoliciesAsTheCountSays) {
    const wrb::test::CTempFolder folder;
    using Policy = std::tuple<int32_t, int32_t, int32_t>;  // id, action, enable
    const std::pair<const char*, std::vector<Policy>> rows[] = {
        {"Count=3\r\nPolicyId0=7\r\nAction0=2\r\nEnable0=1\r\nPolicyId1=-5\r\nEnable1=0\r\n"
         "PolicyId2=nonsense\r\nAction2=9\r\nPolicyId3=99\r\n",
         {{7, 2, 1}, {-5, 0, 0}, {0, 9, 0}}},
        {"", {}},
        {"Count=-1\r\n", {}},
        {"Count=many\r\n", {}},
        {"Count=2147483647\r\n", std::vector<Policy>(CBmPolicyCache::kMaxPolicies)},
    };
    for (const auto& [keys, expected] : rows) {
        wrb::test::WriteAll(folder / L"server.ini", std::string("[VEXOR_BMPolicy]\r\n") + keys);
        ServerIniCache().clear();
        ServerIniCache().init((folder / L"server.ini").c_str(), 1);
        std::vector<Policy> policies;
        for (const tagBmPolicy& policy : CBmPolicyCache().Policies()) {
            policies.emplace_back(policy.policyId, policy.action, policy.enable);
        }
        EXPECT_EQ(policies, expected) << keys;
    }
}

}  // namespace
