#include "PolicyDocument.h"

#include <algorithm>
#include <string>

#include "Text.h"
#include "XmlElement.h"

namespace wrb {
namespace {

std::wstring TextOf(const XmlElement& element, std::wstring_view attribute) {
    std::wstring text(element.Attribute(attribute));
    std::ranges::replace_if(
        text, [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); }, L' ');
    return text;
}

uint32_t NumberOf(const XmlElement& element, std::wstring_view attribute) {
    return static_cast<uint32_t>(ParseInt64(element.Attribute(attribute)));
}

// An attribute is named like the agent's key, without its number. GCC 12 warns of texts in records that have none,
// unless it knows when it compiles.
template <typename Values>
BundleRecord<Values> ReadRecord(const XmlElement& element) {
    constexpr bool kOnlyNumbers =
        std::ranges::all_of(kBundle<Values>.rows, [](const auto& row) { return row.number != nullptr; });
    Values values;
    for (const BundleRow<Values>& row : kBundle<Values>.rows) {
        const std::wstring_view key = row.key;
        const std::wstring_view attribute = key.substr(0, key.find(L'%'));
        if (kOnlyNumbers || row.number != nullptr) {
            SetNumber(row, NumberOf(element, attribute), values);
        } else {
            values.*row.text = TextOf(element, attribute);
        }
    }
    return BundleRecord<Values>(values);
}

template <typename Values>
void ReadRecords(const XmlElement& parent, std::wstring_view name, std::vector<BundleRecord<Values>>& records) {
    parent.ForEachChild(name, [&](const XmlElement& element) { records.push_back(ReadRecord<Values>(element)); });
}

// The attribute of every child of that name, "|" between them.
std::wstring JoinedTexts(const XmlElement& parent, std::wstring_view name, std::wstring_view attribute) {
    std::wstring list;
    parent.ForEachChild(name, [&](const XmlElement& element) {
        list.append(list.empty() ? L"" : L"|").append(TextOf(element, attribute));
    });
    return list;
}

tagVEXORSectionItem ReadDevicePolicy(const XmlElement& element) {
    tagVEXORSectionItem policy;
    policy.guid = TextOf(element, L"DCPolicyGUID");
    policy.users = JoinedTexts(element, L"User", L"Name");
    policy.popAlert = NumberOf(element, L"PopAlert") != 0;
    ReadRecords(element, L"Rule", policy.rules);
    return policy;
}

CSettingContainerDlpCfg::Side ReadSide(const XmlElement& element) {
    CSettingContainerDlpCfg::Side side;
    side.enable = NumberOf(element, L"Enable") != 0;
    element.ForEachChild(L"DevicePolicy",
                         [&](const XmlElement& policy) { side.policies.push_back(ReadDevicePolicy(policy)); });
    return side;
}

}  // namespace

PolicyDocument ReadPolicyDocument(std::wstring_view text) {
    const XmlElement root = ParseXml(text);
    if (root.name != L"Policy") {
        throw XmlError("the element is not Policy");
    }
    PolicyDocument document;
    const XmlElement& behaviour = root.Child(L"Behaviour");
    document.defaultAction = NumberOf(behaviour, L"DefaultAction");
    document.behaviour.m_engine = ReadRecord<EngineValues>(behaviour.Child(L"Engine"));
    ReadRecords(behaviour, L"Exception", document.behaviour.m_exceptions);
    document.behaviour.m_trustedPrograms = JoinedTexts(behaviour, L"TrustedProgram", L"ImagePath");
    const XmlElement& applications = root.Child(L"ApplicationControl");
    ReadRecords(applications, L"Executable", document.applications.m_executables);
    ReadRecords(applications, L"Approved", document.applications.m_approved);
    const XmlElement& devices = root.Child(L"DeviceControl");
    document.devices.m_sides = {ReadSide(devices.Child(L"InOffice")), ReadSide(devices.Child(L"OutOfOffice"))};
    return document;
}

}  // namespace wrb
