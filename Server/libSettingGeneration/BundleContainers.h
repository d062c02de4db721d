// The containers of the setting bundles. As a message: the uid, then the fields of the values in their order; of the
// two with items the uid, then an array.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "DebugLog.h"
#include "IniText.h"
#include "SettingContainer.h"
#include "SettingRecord.h"
#include "SettingTables.h"

namespace wrb {

// Appends the values' section to `out`. `protect` is for the rows that need it; what it throws passes through.
template <typename Values>
void AppendSettings(std::wstring& out, const Values& values, const IniItemProtection& protect) {
    const SettingTable<Values> table = SettingTableOf(values);
    AppendIniSection(out, table.section);
    for (const SettingRow<Values>& row : table.rows) {
        switch (row.kind) {
            case SettingRowKind::Bit:
                AppendIniBool(out, row.key, (values.*row.number & row.bits) != 0);
                break;
            case SettingRowKind::Int:
                AppendIniInt(out, row.key, static_cast<int32_t>(values.*row.number));
                break;
            case SettingRowKind::List:
                AppendPlainIniList(out, row.list, values.*row.text);
                break;
            case SettingRowKind::ProtectedList:
                AppendProtectedIniList(out, row.list, values.*row.text, protect);
                break;
        }
    }
}

// A section shows so many items, however many the database has: an answer must not grow without end.
inline constexpr std::size_t kMostSettingItems = 10000;

// The same for a section with items, numbered from 0. What is left out leaves a line in the log.
template <typename Values>
void AppendSettingItems(std::wstring& out, const std::vector<SettingRecord<Values>>& items) {
    const SettingItemTable<Values> table = SettingTableOf(Values());
    const std::size_t count = std::min(items.size(), kMostSettingItems);
    if (count < items.size()) {
        WRB_LOG(kLogWarning, L"[%s] - items beyond the first %d are left out", std::wstring(table.section).c_str(),
                static_cast<int>(count));
    }
    AppendIniSection(out, table.section);
    AppendIniInt(out, table.countKey, static_cast<int32_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        for (const SettingItemRow<Values>& row : table.rows) {
            AppendIniString(out, FormatIniKey(row.key, i), items[i].*row.text);
        }
    }
}

// One group of values and the uid that they belong to. Serialized is what `Content` is.
template <typename Content>
class BundleContainer : public CSettingContainer {
  public:
    // Reading throws CIPCMsgBufferException when the message ends too early; the fields read so far stay.
    void Deserialize(ISerializer& serializer) override {
        m_uid.clear();
        serializer.GetSerializer() >> m_uid;
        m_content.Deserialize(serializer);
    }
    void Serialize(ISerializer& serializer) const override {
        serializer.GetSerializer() << m_uid;
        m_content.Serialize(serializer);
    }

    std::wstring m_uid;
    Content m_content;
};

template <typename Values>
class SettingsContainer final : public BundleContainer<SettingRecord<Values>> {
  public:
    void ExportToIni(std::wstring& out) const { AppendSettings<Values>(out, this->m_content, {}); }
};

}  // namespace wrb

using CSettingContainerNCIESetting = wrb::SettingsContainer<wrb::NcieValues>;
using CSettingContainerSampleSubmissionSetting = wrb::SettingsContainer<wrb::SampleSubmissionValues>;
using CSettingContainerSablexSetting = wrb::SettingsContainer<wrb::SablexValues>;
using CSettingContainerAggrScanSetting = wrb::SettingsContainer<wrb::AggrScanValues>;

class CSettingContainerWtpSetting final : public wrb::BundleContainer<wrb::SettingRecord<wrb::WtpValues>> {
  public:
    // `protect` gives every address the form in which agents get it; ExportToIni passes on what it throws.
    explicit CSettingContainerWtpSetting(wrb::IniItemProtection protect) : m_protect(std::move(protect)) {}

    void ExportToIni(std::wstring& out) const { wrb::AppendSettings<wrb::WtpValues>(out, m_content, m_protect); }

  private:
    wrb::IniItemProtection m_protect;
};

class CSettingContainerFARestoreSetting final
    : public wrb::BundleContainer<wrb::SettingRecordList<wrb::SettingRecord<wrb::FARestoreValues>>> {
  public:
    void ExportToIni(std::wstring& out) const { wrb::AppendSettingItems(out, m_content.items); }
};

class CSettingContainerQMAgentPolicy final
    : public wrb::BundleContainer<wrb::SettingRecordList<wrb::SettingRecord<wrb::PolicyTrackingValues>>> {
  public:
    // Also logs each policy.
    void ExportToIni(std::wstring& out) const;
};
