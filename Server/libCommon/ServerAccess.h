// Who may open the named objects that the server's processes share.
#pragma once

#include <windows.h>

#include "Handle.h"

namespace wrb {

// What accounts may do beside SYSTEM, the administrators and the object's owner, who may do everything. Services may do
// everything too, but for NothingNorServices.
enum class OtherAccounts { NothingNorServices, Nothing, Read, ReadAndWrite };

// Security attributes for a Create function. Never logs, so that the log itself can use it.
class ServerAccess {
  public:
    // With `inheritable`, child processes get the handle.
    explicit ServerAccess(OtherAccounts others, bool inheritable = false) noexcept;
    ServerAccess(const ServerAccess&) = delete;
    ServerAccess& operator=(const ServerAccess&) = delete;

    // Null when there is no memory for the access list; GetLastError tells after the construction.
    SECURITY_ATTRIBUTES* Attributes() noexcept { return m_descriptor ? &m_attributes : nullptr; }

  private:
    LocalMemory m_descriptor;
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

}  // namespace wrb
