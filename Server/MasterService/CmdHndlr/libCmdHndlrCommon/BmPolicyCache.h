// The server's behaviour-monitor policies, read once at start-up and then handed to the setting handlers.
#pragma once

#include <cstdint>
#include <vector>

#include "SRWLock.h"
#include "VexorRecords.h"

namespace wrb {

class BmPolicyCache {
  public:
    // Reads the section "VEXOR_BMPolicy" through ServerIniCache, which must have its path: "Count" policies, numbered
    // from 0, each with "PolicyId%d", "Action%d" and "Enable%d"; at most kMaxPolicies, beyond that a line is logged. A
    // key that is missing is empty or 0. Throws std::bad_alloc only.
    BmPolicyCache();
    BmPolicyCache(const BmPolicyCache&) = delete;
    BmPolicyCache& operator=(const BmPolicyCache&) = delete;

    // A copy, in the order of the file. Any thread.
    std::vector<tagVEXORPolicyItem> Policies() const;

    static constexpr int32_t kMaxPolicies = 1000;

  private:
    mutable CWrbSRWLock m_lock;
    std::vector<tagVEXORPolicyItem> m_policies WRB_GUARDED_BY(m_lock);
};

}  // namespace wrb

// Set by cmdhl_Initialize; null before it, after cmdhl_Finalize, and when memory was exhausted: test before use.
extern wrb::BmPolicyCache* g_pBmPolicyCache;
