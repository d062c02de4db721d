#include "cmdhm_Vexor.h"

#include <map>

#include "AgentUid.h"
#include "DbVexor.h"
#include "DebugLog.h"
#include "PolicyDocument.h"
#include "XmlElement.h"

// Log lines name this module.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/CmdHndlr/libCmdHndlrCommon/cmdhm_Common.cpp"

namespace {

constexpr wchar_t kFunction[] = L"cmdhm_GetVexorSetting";

using Policies = std::vector<tagVEXORPolicyItem>;

Policies MergePolicies(const Policies& serverPolicies, const Policies& overrides, uint32_t defaultAction) {
    Policies merged = serverPolicies;
    std::map<std::wstring, std::size_t> places;
    for (std::size_t i = 0; i < merged.size(); ++i) {
        places.try_emplace(merged[i].policyId, i);
    }
    for (const tagVEXORPolicyItem& policy : overrides) {
        const auto [place, isNew] = places.try_emplace(policy.policyId, merged.size());
        if (isNew) {
            merged.push_back(policy);
        } else {
            merged[place->second] = policy;
        }
    }
    for (tagVEXORPolicyItem& policy : merged) {
        policy.action = policy.action == 0 ? defaultAction : policy.action;
    }
    return merged;
}

bool AppendSections(std::wstring& out, const std::wstring& uid, const std::wstring& text,
                    const Policies& serverPolicies) {
    wrb::CustomBmConfig custom;
    wrb::PolicyDocument document;
    try {
        document = wrb::ReadPolicyDocument(text);
    } catch (const wrb::XmlError& error) {
        WRB_LOG(kLogError, L"%s - the policy document cannot be read: %S", kFunction, error.what());
        return false;
    }
    if (!dbGetVexorCustomBmCfgW(uid.c_str(), custom)) {
        return false;
    }
    document.behaviour.m_policies = MergePolicies(serverPolicies, custom.policies, document.defaultAction);
    document.behaviour.ExportToIni(out);
    document.applications.ExportToIni(out);
    document.devices.ExportToIni(out);
    return true;
}

}  // namespace

bool cmdhm_GetVexorSetting(std::wstring& out, const wchar_t* pszUid, const Policies& serverPolicies) {
    const std::wstring uid = wrb::CutUid(pszUid);
    std::wstring text;
    WRB_LOG(kLogDebug8, L"%s - pszUid=%s", kFunction, uid.c_str());
    if (!dbGetVexorBmCfgW(uid.c_str(), text)) {
        WRB_LOG(kLogDebug8, L"%s - failed to send command to DB server", kFunction);
        return false;
    }
    return text.empty() || AppendSections(out, uid, text, serverPolicies);
}
