#include "BmPolicyCache.h"

#include <algorithm>

#include "DebugLog.h"
#include "INICache.h"
#include "IniValues.h"
#include "Text.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrClient/BmPolicyCache.cpp"

wrb::BmPolicyCache* g_pBmPolicyCache = nullptr;

namespace {

constexpr wchar_t kSection[] = L"VEXOR_BMPolicy";

tagVEXORPolicyItem ReadPolicy(int32_t index) {
    const auto key = [index](const wchar_t* format) { return wrb::FormatWide(format, index); };
    tagVEXORPolicyItem policy;
    policy.policyId = wrb::ReadIniText(ServerIniCache(), kSection, key(L"PolicyId%d").c_str());
    policy.action = ServerIniCache().readINIInt(kSection, key(L"Action%d").c_str(), 0);
    policy.enable = ServerIniCache().readINIInt(kSection, key(L"Enable%d").c_str(), 0) != 0;
    return policy;
}

}  // namespace

wrb::BmPolicyCache::BmPolicyCache() {
    const auto asked = static_cast<int32_t>(ServerIniCache().readINIInt(kSection, L"Count", 0));
    if (asked > kMaxPolicies) {
        WRB_LOG(kLogWarning, L"%s - %d policies asked for, %d are read", L"CBmPolicyCache::CBmPolicyCache", asked,
                kMaxPolicies);
    }
    const int32_t count = std::clamp<int32_t>(asked, 0, kMaxPolicies);
    const wrb::ExclusiveGuard guard(m_lock);
    m_policies.reserve(static_cast<std::size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
        m_policies.push_back(ReadPolicy(i));
    }
}

std::vector<tagVEXORPolicyItem> wrb::BmPolicyCache::Policies() const {
    const wrb::SharedGuard guard(m_lock);
    return m_policies;
}
