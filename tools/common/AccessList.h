// Who may open the objects that our programs create: pipes, events, sections.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "Handle.h"

namespace wrb {

// The SID, as text, of an account that is given as a SID ("S-1-5-32-545") or as a name that this machine knows
// ("DOMAIN\web"). Nothing: there is no such account, GetLastError tells.
std::optional<std::wstring> AccountSid(const std::wstring& account);

// Appends the SIDs of `accounts` to `sids`. Nothing: all are known; else the one that is not.
std::optional<std::wstring> AddAccountSids(const std::vector<std::wstring>& accounts, std::vector<std::wstring>& sids);

// A security descriptor: SYSTEM, the administrators and the account of this process may do everything with the object,
// each account of `sids` may do what `rights` says, and nobody else may open it.
//
// The account of this process is in the list because a program needs the access to its own pipe to create the second
// instance. It gains nothing by it: it may do as much with the process itself.
class AccessList {
  public:
    // `rights` in the letters of a security descriptor string, such as "GW". False: GetLastError tells.
    bool Set(const std::vector<std::wstring>& sids, const wchar_t* rights);

    // For a Create function; valid for as long as this object, and null before Set has succeeded.
    SECURITY_ATTRIBUTES* Attributes() { return m_descriptor ? &m_attributes : nullptr; }

  private:
    LocalMemory m_descriptor;
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

}  // namespace wrb
