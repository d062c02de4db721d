#include "KeyedSettings.h"

#include <numeric>

#include "IniText.h"
#include "Serializer.h"

namespace wrb {

KeyedSettings::KeyedSettings(std::span<const KeyedSection> sections)
    : m_sections(sections),
      m_values(
          std::accumulate(sections.begin(), sections.end(), std::size_t{0},
                          [](std::size_t sum, const KeyedSection& section) { return sum + section.keys.size(); })) {}

void KeyedSettings::Deserialize(ISerializer& serializer) {
    CSerializer& message = serializer.GetSerializer();
    // A text of length 0 leaves its target as it was.
    m_uid.clear();
    message >> m_uid;
    Walk(*this, [&](const wchar_t*, const SettingKey& key, SettingValue& value) {
        value = {};
        key.kind == KeyKind::Text ? message >> value.text : message >> value.number;
    });
}

void KeyedSettings::Serialize(ISerializer& serializer) const {
    CSerializer& message = serializer.GetSerializer();
    message << m_uid;
    Walk(*this, [&](const wchar_t*, const SettingKey& key, const SettingValue& value) {
        key.kind == KeyKind::Text ? message << value.text : message << value.number;
    });
}

void KeyedSettings::ExportToIni(std::wstring& out) const {
    const wchar_t* open = nullptr;
    Walk(*this, [&](const wchar_t* section, const SettingKey& key, const SettingValue& value) {
        if (section != open) {
            AppendIniSection(out, section);
            open = section;
        }
        switch (key.kind) {
            case KeyKind::Switch:
                return AppendIniBool(out, key.name, value.number != 0);
            case KeyKind::Number:
                return AppendIniInt(out, key.name, static_cast<int32_t>(value.number));
            case KeyKind::Text:
                return AppendIniString(out, key.name, value.text);
        }
    });
}

}  // namespace wrb
