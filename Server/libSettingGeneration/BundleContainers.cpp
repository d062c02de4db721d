#include "BundleContainers.h"

#include <algorithm>
#include <span>

#include "DebugLog.h"

void CSettingContainerQMAgentPolicy::ExportToIni(std::wstring& out) const {
    const std::size_t shown = std::min<std::size_t>(m_content.items.size(), wrb::kMostSettingItems);
    for (const wrb::PolicyTrackingValues& policy : std::span(m_content.items.data(), shown)) {
        WRB_LOG(kLogDebug8, L"%s - Policy name = %s, PolicyOwner = %s, PolicyTypeID = %s,",
                L"CSettingContainerQMAgentPolicy::ExportToIni", policy.name.c_str(), policy.policyOwner.c_str(),
                policy.policyTypeId.c_str());
    }
    wrb::AppendSettingItems(out, m_content.items);
}
