// The updates that set more than one scan group or none: exclusions of all scan types, and privileges.
#pragma once

#include "cmdhm_PrivilegeUpdate.h"

namespace wrb {

// The same exclusions for each scan type. One that fails does not keep the others from being written.
bool SetAllExclusions(CCmdProtocol& message, const wchar_t* uid);

// One switch a bit, in the order of the bits.
template <DbPrivilegeBit... bits>
bool SetPrivileges(CCmdProtocol& message, const wchar_t* uid) {
    static constexpr DbPrivilegeBit kBits[] = {bits...};
    return cmdhm_SetPrivileges(message, uid, kBits);
}

// Scheduled scans and virus mail.
bool SetWarnings(CCmdProtocol& message, const wchar_t* uid);

}  // namespace wrb
