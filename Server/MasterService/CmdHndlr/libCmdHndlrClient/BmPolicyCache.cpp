#include "BmPolicyCache.h"

#include <algorithm>

#include "DebugLog.h"
#include "INICache.h"
#include "Text.h"

wrb::BmPolicyCache* g_pBmPolicyCache = nullptr;

namespace {

constexpr wchar_t kSection[] = L"VEXOR_BMPolicy";

int32_t ReadNumber(const wchar_t* keyFormat, int32_t index) {
    wchar_t key[32];
    wrb::FormatInto(key, std::size(key), keyFormat, index);
    return static_cast<int32_t>(ServerIniCache().readINIInt(kSection, key, 0));
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
        m_policies.push_back({ReadNumber(L"PolicyId%d", i), ReadNumber(L"Action%d", i), ReadNumber(L"Enable%d", i)});
    }
}

std::vector<wrb::BmPolicy> wrb::BmPolicyCache::Policies() const {
    const wrb::SharedGuard guard(m_lock);
    return m_policies;
}
