#include "BundleContainers.h"

#include "DebugLog.h"

void CSettingContainerQMAgentPolicy::ExportToIni(std::wstring& out) const {
    for (const tagPolicyTrackingValues& policy : m_content.items) {
        WRB_LOG(kLogDebug8, L"%s - Policy name = %s, PolicyOwner = %s, PolicyTypeID = %s,",
                L"CSettingContainerQMAgentPolicy::ExportToIni", policy.name.c_str(), policy.policyOwner.c_str(),
                policy.policyTypeId.c_str());
    }
    wrb::AppendSettingItems(out, m_content.items);
}
