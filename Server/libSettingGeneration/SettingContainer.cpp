#include "SettingContainer.h"

#include "RenderScanGroup.h"
#include "Serializer.h"

void wrb::ScanSettingContainer::Deserialize(ISerializer& serializer) {
    // A text of no length at all on the wire leaves its target as it was.
    m_uid.clear();
    m_values = {};
    CSerializer& message = serializer.GetSerializer();
    message >> m_uid;
    for (const wrb::ScanNumber number : m_group.numbers) {
        message >> m_values.*number;
    }
    for (const wrb::ScanText text : m_group.texts) {
        message >> m_values.*text;
    }
}

void wrb::ScanSettingContainer::Serialize(ISerializer& serializer) const {
    CSerializer& message = serializer.GetSerializer();
    message << m_uid;
    for (const wrb::ScanNumber number : m_group.numbers) {
        message << m_values.*number;
    }
    for (const wrb::ScanText text : m_group.texts) {
        message << m_values.*text;
    }
}

void wrb::ScanSettingContainer::ExportToIni(std::wstring& out) const {
    wrb::RenderScanGroup(out, m_group, m_uid, m_values);
}
