// The server's behaviour-monitor policies, read once at start-up and then handed to the setting handlers.
#pragma once

#include <cstdint>
#include <vector>

#include "SRWLock.h"

namespace wrb {

// One policy, as the server INI file has it; a key that is missing reads as 0.
struct BmPolicy {
    int32_t policyId = 0;  // "PolicyId%d"
    int32_t action = 0;    // "Action%d"
    int32_t enable = 0;    // "Enable%d"
};

class BmPolicyCache {
  public:
    // Reads the section "VEXOR_BMPolicy" through ServerIniCache, which must have its path: "Count" policies, numbered
    // from 0, at most kMaxPolicies; beyond that a line is logged. Throws std::bad_alloc only.
    BmPolicyCache();
    BmPolicyCache(const BmPolicyCache&) = delete;
    BmPolicyCache& operator=(const BmPolicyCache&) = delete;

    // A copy, in the order of the file. Any thread.
    std::vector<BmPolicy> Policies() const;

    static constexpr int32_t kMaxPolicies = 1000;

  private:
    mutable CWrbSRWLock m_lock;
    std::vector<BmPolicy> m_policies WRB_GUARDED_BY(m_lock);
};

}  // namespace wrb

// Set by cmdhl_Initialize; null before it, after cmdhl_Finalize, and when memory was exhausted: test before use.
extern wrb::BmPolicyCache* g_pBmPolicyCache;
