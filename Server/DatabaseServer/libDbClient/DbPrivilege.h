// The bits of the two privilege words: what an agent's user may do and is shown. Bits without a name here belong to the
// database's other clients; the masks of dbSetPrivilegeW leave them as they are.
//
// Bits 0 to 31 are in word 1, 32 to 63 in word 2. A set bit means on. docs/wire-formats.md has the same rows.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "DbAgent.h"

namespace wrb {

enum class DbPrivilegeBit : uint8_t {
    ScheduleUpdate = 0,
    ScheduleScanWarning = 1,
    Uninstall = 2,
    Unload = 3,
    UpdateFromVendor = 4,
    UpdateFromOthers = 5,
    Mobile = 6,
    ScheduleUpdateSetting = 7,
    StopScheduleScan = 8,
    DelayScheduleScan = 9,
    Pop3MailScan = 10,
    VirusMailWarning = 11,
    NotificationSetting = 12,
    VirusAlert = 13,
    SablexAlert = 14,
    RebootPrompt = 15,
    MailScanPage = 16,
    UrlFilterAlert = 17,
    UpdateNow = 18,
    ProxySetting = 19,
    FirewallControl = 20,
    FirewallLogUpload = 21,
    FirewallPage = 22,
    ScanSetting = 23,
    BehaviourSetting = 24,
    SampleSubmission = 32 + 4
};

struct DbPrivilegeKey {
    DbPrivilegeBit bit;
    std::wstring_view key;  // of the switch in the agent's sections
};

inline constexpr DbPrivilegeKey kDbPrivilegeKeys[] = {
    {DbPrivilegeBit::ScheduleUpdate, L"ScheduleUpdateEnableDisable"},
    {DbPrivilegeBit::ScheduleScanWarning, L"EnableScheduleScanWarning"},
    {DbPrivilegeBit::Uninstall, L"Uninst"},
    {DbPrivilegeBit::Unload, L"Unload"},
    {DbPrivilegeBit::UpdateFromVendor, L"AllowUpdateFromCWAU"},
    {DbPrivilegeBit::UpdateFromOthers, L"AllowUpdateFromOtherAU"},
    {DbPrivilegeBit::Mobile, L"Mobile"},
    {DbPrivilegeBit::ScheduleUpdateSetting, L"AllowScheduleUpdate"},
    {DbPrivilegeBit::StopScheduleScan, L"AllowStopScheduleScan"},
    {DbPrivilegeBit::DelayScheduleScan, L"AllowDelayScheduleScan"},
    {DbPrivilegeBit::Pop3MailScan, L"EnablePop3MailScan"},
    {DbPrivilegeBit::VirusMailWarning, L"EnableVirEmailWarning"},
    {DbPrivilegeBit::NotificationSetting, L"AllowCfgNotification"},
    {DbPrivilegeBit::VirusAlert, L"ClnAlertEnabled"},
    {DbPrivilegeBit::SablexAlert, L"SablxAlertEnabled"},
    {DbPrivilegeBit::RebootPrompt, L"AllowPromptRebootForCleanup"},
    {DbPrivilegeBit::MailScanPage, L"MailScanPageOnOff"},
    {DbPrivilegeBit::UrlFilterAlert, L"UrlFilterAlertEnabled"},
    {DbPrivilegeBit::UpdateNow, L"AllowUpdateNow"},
    {DbPrivilegeBit::ProxySetting, L"ProxySettingOnOff"},
    {DbPrivilegeBit::FirewallControl, L"AllowControlPFW"},
    {DbPrivilegeBit::FirewallLogUpload, L"AllowSendPFWLog"},
    {DbPrivilegeBit::FirewallPage, L"DisplayPFWTab"},
    {DbPrivilegeBit::ScanSetting, L"AllowCfg"},
    {DbPrivilegeBit::BehaviourSetting, L"AllowCfgBM"},
    {DbPrivilegeBit::SampleSubmission, L"EnableSampleSubmission"},
};

// The privilege that a key of the agent's sections shows, if it shows one.
constexpr std::optional<DbPrivilegeBit> FindPrivilege(std::wstring_view key) noexcept {
    for (const DbPrivilegeKey& row : kDbPrivilegeKeys) {
        if (row.key == key) {
            return row.bit;
        }
    }
    return std::nullopt;
}

constexpr bool HasPrivilege(const DbPrivilege& privilege, DbPrivilegeBit bit) noexcept {
    const auto number = static_cast<uint32_t>(bit);
    return (((number < 32 ? privilege.word1 : privilege.word2) >> number % 32) & 1) != 0;
}

// Sets the bit; to clear one in the database, leave it out of the value and set it in the mask.
constexpr void AddPrivilege(DbPrivilege& privilege, DbPrivilegeBit bit) noexcept {
    const auto number = static_cast<uint32_t>(bit);
    (number < 32 ? privilege.word1 : privilege.word2) |= uint32_t{1} << number % 32;
}

}  // namespace wrb
