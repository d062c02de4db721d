// Containers of settings that are nothing but keys with a value each: one table of keys says what is in the container,
// in its sections and on the wire.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "SettingContainer.h"

namespace wrb {

enum class KeyKind : uint8_t {
    Switch,  // "1" or "0"
    Number,  // shown signed
    Text     // as it stands
};

struct SettingKey {
    const wchar_t* name;
    KeyKind kind;
};

struct KeyedSection {
    const wchar_t* name;
    std::span<const SettingKey> keys;
};

struct SettingValue {
    uint32_t number = 0;  // Switch (0 is off), Number
    std::wstring text;    // Text
};

// As a message: the uid, then the values in the order of the keys, each as a 32-bit integer or as a text.
class KeyedSettings : public CSettingContainer {
  public:
    // Reading throws CIPCMsgBufferException when the message ends too early; the values read so far stay.
    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;

    // Appends every section.
    void ExportToIni(std::wstring& out) const;

    // Calls visit(section, key, value) for each key, `section` being the name.
    template <typename Visit>
    void ForEach(Visit visit) {
        Walk(*this, visit);
    }

    std::wstring m_uid;

  protected:
    // `sections` must outlive the container.
    explicit KeyedSettings(std::span<const KeyedSection> sections);

  private:
    template <typename Settings, typename Visit>
    static void Walk(Settings& settings, Visit visit) {
        std::size_t i = 0;
        for (const KeyedSection& section : settings.m_sections) {
            for (const SettingKey& key : section.keys) {
                visit(section.name, key, settings.m_values[i++]);
            }
        }
    }

    std::span<const KeyedSection> m_sections;
    std::vector<SettingValue> m_values;  // one a key
};

}  // namespace wrb

// The connection, the permissions and the update schedule of an agent: "INI_CRITICAL_SECTION" and
// "INI_SCHEDULE_SECTION".
class CSettingContainerCriticalSetting final : public wrb::KeyedSettings {
  public:
    CSettingContainerCriticalSetting();
};

// The versions of patterns and engines: "INI_COMPONENT_VERSION_SECTION".
class CSettingContainerComponentVersion final : public wrb::KeyedSettings {
  public:
    CSettingContainerComponentVersion();
};
