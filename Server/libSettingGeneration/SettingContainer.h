// Setting containers: one group of an agent's settings as the database hands it over. A container renders itself as INI
// text and travels in binary messages.
//
// A container belongs to one thread.
#pragma once

#include <string>

#include "ISerializer.h"
#include "ScanGroup.h"

// Base of every container. ExportToIni is not virtual: callers know the concrete type.
class CSettingContainer : public ISerializable {
  public:
    // Both walk the fields in the order in which the container declares them.
    void Deserialize(ISerializer& serializer) override = 0;
    void Serialize(ISerializer& serializer) const override = 0;
};

namespace wrb {

// The container of a scan group: the uid, the group's numbers, the group's texts.
class ScanSettingContainer : public CSettingContainer {
  public:
    // Reading throws CIPCMsgBufferException when the message ends too early; the fields read so far stay.
    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;

    // Appends the group's section.
    void ExportToIni(std::wstring& out) const;

    std::wstring m_uid;
    ScanGroupValues m_values;

  protected:
    explicit ScanSettingContainer(const wrb::ScanGroup& group) : m_group(group) {}

  private:
    const wrb::ScanGroup& m_group;
};

template <ScanType type, ScanGroupKind kind>
class ScanGroupContainer final : public ScanSettingContainer {
  public:
    ScanGroupContainer() : ScanSettingContainer(FindScanGroup(type, kind)) {}
};

}  // namespace wrb

using CSettingContainerMSCfg = wrb::ScanGroupContainer<wrb::ScanType::MS, wrb::ScanGroupKind::Main>;
using CSettingContainerRTCfg = wrb::ScanGroupContainer<wrb::ScanType::RT, wrb::ScanGroupKind::Main>;
using CSettingContainerPSCfg = wrb::ScanGroupContainer<wrb::ScanType::PS, wrb::ScanGroupKind::Main>;
using CSettingContainerSNCfg = wrb::ScanGroupContainer<wrb::ScanType::SN, wrb::ScanGroupKind::Main>;
using CSettingContainerMSCfgEx = wrb::ScanGroupContainer<wrb::ScanType::MS, wrb::ScanGroupKind::Exclusion>;
using CSettingContainerRTCfgEx = wrb::ScanGroupContainer<wrb::ScanType::RT, wrb::ScanGroupKind::Exclusion>;
using CSettingContainerPSCfgEx = wrb::ScanGroupContainer<wrb::ScanType::PS, wrb::ScanGroupKind::Exclusion>;
using CSettingContainerSNCfgEx = wrb::ScanGroupContainer<wrb::ScanType::SN, wrb::ScanGroupKind::Exclusion>;
using CSettingContainerSpyMSCfg = wrb::ScanGroupContainer<wrb::ScanType::MS, wrb::ScanGroupKind::Spyware>;
using CSettingContainerSpyRTCfg = wrb::ScanGroupContainer<wrb::ScanType::RT, wrb::ScanGroupKind::Spyware>;
using CSettingContainerSpyPSCfg = wrb::ScanGroupContainer<wrb::ScanType::PS, wrb::ScanGroupKind::Spyware>;
using CSettingContainerSpySNCfg = wrb::ScanGroupContainer<wrb::ScanType::SN, wrb::ScanGroupKind::Spyware>;
