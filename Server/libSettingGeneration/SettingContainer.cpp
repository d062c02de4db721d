#include "SettingContainer.h"

#include "ExportScanCfg.h"
#include "Serializer.h"

namespace wrb {

void ScanSettingContainer::Deserialize(ISerializer& serializer) {
    // A text of length 0 leaves its target as it was.
    m_uid.clear();
    m_values = {};
    CSerializer& message = serializer.GetSerializer();
    message >> m_uid;
    for (const ScanNumber number : m_group.numbers) {
        message >> m_values.*number;
    }
    for (const ScanText text : m_group.texts) {
        message >> m_values.*text;
    }
}

void ScanSettingContainer::Serialize(ISerializer& serializer) const {
    CSerializer& message = serializer.GetSerializer();
    message << m_uid;
    for (const ScanNumber number : m_group.numbers) {
        message << m_values.*number;
    }
    for (const ScanText text : m_group.texts) {
        message << m_values.*text;
    }
}

void ScanSettingContainer::ExportToIni(std::wstring& out) const {
    RenderScanGroup(out, m_group, m_uid, m_values);
}

}  // namespace wrb
