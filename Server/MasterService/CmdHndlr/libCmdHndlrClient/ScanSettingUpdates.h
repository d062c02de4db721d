// The updates that set more than one scan group or none: exclusions of all scan types, and privileges.
#pragma once

#include <span>

#include "DbPrivilege.h"

class CCmdProtocol;

namespace wrb {

// The same exclusions for each scan type. One that fails does not keep the others from being written.
bool SetAllExclusions(CCmdProtocol& message, const wchar_t* uid);

// Stores one switch a bit, in the order of `bits`; the agent's other privileges stay as they are. A missing switch is
// off. False, after a log line, for an empty uid and when the request could not be sent.
bool SetPrivileges(CCmdProtocol& message, const wchar_t* uid, std::span<const DbPrivilegeBit> bits);

template <DbPrivilegeBit... bits>
bool SetPrivileges(CCmdProtocol& message, const wchar_t* uid) {
    static constexpr DbPrivilegeBit kBits[] = {bits...};
    return SetPrivileges(message, uid, kBits);
}

// The warnings of scheduled scans and of viruses in mail.
bool SetWarnings(CCmdProtocol& message, const wchar_t* uid);

}  // namespace wrb
