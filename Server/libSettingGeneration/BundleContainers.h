// The containers of the setting bundles. As a message: the uid, then what BundleRecord.h says.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <utility>

#include "BundleRecord.h"
#include "IniList.h"
#include "IniText.h"
#include "SettingContainer.h"

namespace wrb {

// Appends the row's lines. `key` is the row's, with the record's number in it. Passes on what `protect` throws.
template <typename Values>
void AppendBundleRow(std::wstring& out, const BundleRow<Values>& row, const std::wstring& key, const Values& values,
                     const IniItemProtection& protect) {
    switch (row.kind) {
        case BundleRowKind::Bit:
            return AppendIniBool(out, key, (values.*row.number & row.bits) != 0);
        case BundleRowKind::Int:
            return AppendIniInt(out, key, static_cast<int32_t>(values.*row.number));
        case BundleRowKind::Text:
            return AppendIniString(out, key, values.*row.text);
        case BundleRowKind::List:
            return AppendPlainIniList(out, {row.countKey, row.key}, values.*row.text);
        case BundleRowKind::ProtectedList:
            return AppendProtectedIniList(out, {row.countKey, row.key}, values.*row.text, protect);
    }
}

// A section shows so many records, however many the database has: an answer must not grow without end.
inline constexpr std::size_t kMostBundleRecords = 10000;

// The values of one agent's bundle and the agent's uid.
template <typename Values>
class BundleContainer final : public CSettingContainer {
  public:
    BundleContainer() = default;

    // `protect` gives the items of protected lists the form in which agents get them. A bundle without such lists, or
    // with empty ones, needs none.
    explicit BundleContainer(IniItemProtection protect) : m_protect(std::move(protect)) {}

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

    // Appends the section, and logs what the bundle logs of its records. Passes on what the protection throws. Records
    // beyond kMostBundleRecords are left out, with a line in the log.
    void ExportToIni(std::wstring& out) const {
        const std::span<const BundleRecord<Values>> records = Records();
        if (kBundle<Values>.logRecord != nullptr) {
            std::ranges::for_each(records, kBundle<Values>.logRecord);
        }
        AppendIniSection(out, kBundle<Values>.section);
        if constexpr (kHasItems<Values>) {
            if (records.size() < m_content.items.size()) {
                WRB_LOG(kLogWarning, L"[%s] - items beyond the first %d are left out", kBundle<Values>.section,
                        static_cast<int>(records.size()));
            }
            AppendIniInt(out, kBundle<Values>.countKey, static_cast<int32_t>(records.size()));
        }
        for (std::size_t i = 0; i < records.size(); ++i) {
            for (const BundleRow<Values>& row : kBundle<Values>.rows) {
                AppendBundleRow<Values>(out, row, kHasItems<Values> ? FormatIniKey(row.key, i) : row.key, records[i],
                                        m_protect);
            }
        }
    }

    std::wstring m_uid;
    BundleContent<Values> m_content;

  private:
    std::span<const BundleRecord<Values>> Records() const {
        if constexpr (kHasItems<Values>) {
            return std::span(m_content.items).first(std::min(m_content.items.size(), kMostBundleRecords));
        } else {
            return {&m_content, 1};
        }
    }

    IniItemProtection m_protect;
};

}  // namespace wrb

using CSettingContainerWtpSetting = wrb::BundleContainer<wrb::WtpValues>;
using CSettingContainerFARestoreSetting = wrb::BundleContainer<wrb::FARestoreValues>;
using CSettingContainerNCIESetting = wrb::BundleContainer<wrb::NcieValues>;
using CSettingContainerSampleSubmissionSetting = wrb::BundleContainer<wrb::SampleSubmissionValues>;
using CSettingContainerSablexSetting = wrb::BundleContainer<wrb::SablexValues>;
using CSettingContainerAggrScanSetting = wrb::BundleContainer<wrb::AggrScanValues>;
using CSettingContainerQMAgentPolicy = wrb::BundleContainer<wrb::PolicyTrackingValues>;
using CSettingContainerServiceSwitch = wrb::BundleContainer<wrb::ServiceSwitchValues>;
using CSettingContainerScanType = wrb::BundleContainer<wrb::ScanTypeValues>;
using CSettingContainerSpywareWhiteList = wrb::BundleContainer<wrb::SpywareWhiteListValues>;
