#include "VexorContainers.h"

#include <algorithm>

#include "BundleContainers.h"
#include "DebugLog.h"
#include "IniList.h"
#include "IniText.h"

namespace wrb {
namespace {

// "Enable%d" and "Out" give "EnableOut%d".
std::wstring WithSuffix(std::wstring key, const wchar_t* suffix) {
    return key.insert(std::min(key.size(), key.find(L'%')), suffix);
}

template <typename Values>
void AppendRecords(std::wstring& out, const std::vector<BundleRecord<Values>>& records, const wchar_t* suffix = L"") {
    for (std::size_t i = 0; i < records.size(); ++i) {
        for (const BundleRow<Values>& row : kBundle<Values>.rows) {
            AppendBundleRow<Values>(out, row, FormatIniKey(WithSuffix(row.key, suffix).c_str(), i), records[i], {});
        }
    }
}

template <typename Record>
void AppendCount(std::wstring& out, const wchar_t* key, const std::vector<Record>& records) {
    AppendIniInt(out, key, static_cast<int32_t>(records.size()));
}

template <typename Values>
void AppendListSection(std::wstring& out, const wchar_t* section, const std::vector<BundleRecord<Values>>& records) {
    if (!records.empty()) {
        AppendIniSection(out, section);
        AppendRecords(out, records);
    }
}

void AppendPolicies(std::wstring& out, const std::vector<tagVEXORPolicyItem>& policies) {
    const std::size_t count = std::min(policies.size(), kMostBundleRecords);
    if (count < policies.size()) {
        WRB_LOG(kLogWarning, L"[%s] - items beyond the first %d are left out", L"VEXOR_BMPolicy",
                static_cast<int>(count));
    }
    AppendIniSection(out, L"VEXOR_BMPolicy");
    AppendIniInt(out, L"Count", static_cast<int32_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        AppendIniString(out, FormatIniKey(L"PolicyId%d", i), policies[i].policyId);
        AppendIniInt(out, FormatIniKey(L"Action%d", i), static_cast<int32_t>(policies[i].action));
        AppendIniBool(out, FormatIniKey(L"Enable%d", i), policies[i].enable);
    }
}

void AppendDevicePolicy(std::wstring& out, const tagVEXORSectionItem& policy, const wchar_t* suffix) {
    AppendIniString(out, L"DCPolicyGUID", policy.guid);
    AppendIniString(out, L"DCUser", policy.users);
    AppendRecords(out, policy.rules, suffix);
    AppendCount(out, WithSuffix(L"Count", suffix).c_str(), policy.rules);
    AppendIniBool(out, WithSuffix(L"PopAlert", suffix), policy.popAlert);
}

}  // namespace
}  // namespace wrb

void CSettingContainerBM::Deserialize(ISerializer& serializer) {
    *this = {};  // a text of length 0 would leave its target as it was
    serializer.GetSerializer() >> m_uid >> m_policies >> m_exceptions >> m_trustedPrograms >> m_engine;
}

void CSettingContainerBM::Serialize(ISerializer& serializer) const {
    serializer.GetSerializer() << m_uid << m_policies << m_exceptions << m_trustedPrograms << m_engine;
}

void CSettingContainerBM::ExportToIni(std::wstring& out) const {
    wrb::AppendPolicies(out, m_policies);
    AppendIniSection(out, L"VEXOR_Exception");
    wrb::AppendRecords(out, m_exceptions);
    AppendIniString(out, L"TPList", m_trustedPrograms);
    AppendIniSection(out, L"VEXOR_Engine");
    wrb::AppendRecords<wrb::EngineValues>(out, {m_engine});
}

void CSettingContainerDAC::Deserialize(ISerializer& serializer) {
    m_uid.clear();
    serializer.GetSerializer() >> m_uid >> m_executables >> m_approved;
}

void CSettingContainerDAC::Serialize(ISerializer& serializer) const {
    serializer.GetSerializer() << m_uid << m_executables << m_approved;
}

void CSettingContainerDAC::ExportToIni(std::wstring& out) const {
    AppendIniSection(out, L"VEXOR_DACPolicy");
    wrb::AppendCount(out, L"ExecutableListCount", m_executables);
    wrb::AppendCount(out, L"ApprovedListCount", m_approved);
    wrb::AppendListSection(out, L"DAC_EXECUTABLE_LIST", m_executables);
    wrb::AppendListSection(out, L"DAC_APPROVED_LIST", m_approved);
}

void CSettingContainerDlpCfg::Deserialize(ISerializer& serializer) {
    CSerializer& in = serializer.GetSerializer();
    m_uid.clear();
    in >> m_uid;
    for (Side& side : m_sides) {
        in >> side.enable >> side.policies;
    }
}

void CSettingContainerDlpCfg::Serialize(ISerializer& serializer) const {
    CSerializer& out = serializer.GetSerializer();
    out << m_uid;
    for (const Side& side : m_sides) {
        out << side.enable << side.policies;
    }
}

void CSettingContainerDlpCfg::ExportToIni(std::wstring& out) const {
    const auto& [in, outside] = m_sides;
    AppendIniSection(out, L"VEXOR_UserBased_DC_Config");
    wrb::AppendCount(out, L"DCPolicyCountIn", in.policies);
    wrb::AppendCount(out, L"DCPolicyCountOut", outside.policies);
    AppendIniBool(out, L"EnableIn", in.enable);
    AppendIniBool(out, L"EnableOut", outside.enable);
    for (std::size_t side = 0; side < m_sides.size(); ++side) {
        for (std::size_t i = 0; i < m_sides[side].policies.size(); ++i) {
            AppendIniSection(out, wrb::FormatIniKey(side == 0 ? L"VEXOR_DCPolicyIn_%d" : L"VEXOR_DCPolicyOut_%d", i));
            wrb::AppendDevicePolicy(out, m_sides[side].policies[i], side == 0 ? L"" : L"Out");
        }
    }
}
