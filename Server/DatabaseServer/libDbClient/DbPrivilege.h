// The bits of the two privilege words: what an agent's user may do and is shown. Bits without a name here belong to the
// database's other clients; the masks of dbSetPrivilegeW leave them as they are.
//
// Bits 0 to 31 are in word 1, 32 to 63 in word 2. A set bit means on. The comments give the agent's key of the switch.
// docs/wire-formats.md has the same rows.
#pragma once

#include <cstdint>

#include "DbAgent.h"

namespace wrb {

enum class DbPrivilegeBit : uint8_t {
    ScheduleUpdate = 0,        // ScheduleUpdateEnableDisable
    ScheduleScanWarning = 1,   // EnableScheduleScanWarning
    Pop3MailScan = 10,         // EnablePop3MailScan
    VirusMailWarning = 11,     // EnableVirEmailWarning
    SampleSubmission = 32 + 4  // EnableSampleSubmission
};

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
