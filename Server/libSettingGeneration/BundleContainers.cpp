#include "BundleContainers.h"

#include <ranges>

#include "DebugLog.h"

void CSettingContainerQMAgentPolicy::ExportToIni(std::wstring& out) const {
    for (const tagPolicyTrackingValues& policy : std::views::take(m_content.items, wrb::kMostSettingItems)) {
        WRB_LOG(kLogDebug8, L"%s - Policy name = %s, PolicyOwner = %s, PolicyTypeID = %s,",
                L"CSettingContainerQMAgentPolicy::ExportToIni", policy.name.c_str(), policy.policyOwner.c_str(),
                policy.policyTypeId.c_str());
    }
    wrb::AppendSettingItems(out, m_content.items);
}
