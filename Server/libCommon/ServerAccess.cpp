#include "ServerAccess.h"

#include <sddl.h>

namespace wrb {
namespace {

// SU is every account that the system has logged on as a service, S-1-3-4 the owner of the object.
#define WRB_OWN_ACCOUNTS L"D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;S-1-3-4)"
#define WRB_SERVER_ACCOUNTS WRB_OWN_ACCOUNTS L"(A;;GA;;;SU)"

constexpr const wchar_t* kLists[] = {WRB_OWN_ACCOUNTS, WRB_SERVER_ACCOUNTS, WRB_SERVER_ACCOUNTS L"(A;;GR;;;WD)",
                                     WRB_SERVER_ACCOUNTS L"(A;;GRGW;;;WD)"};

}  // namespace

ServerAccess::ServerAccess(OtherAccounts others, bool inheritable) noexcept {
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(kLists[static_cast<std::size_t>(others)], SDDL_REVISION_1,
                                                             m_descriptor.Receive(), nullptr)) {
        m_attributes.lpSecurityDescriptor = m_descriptor.Get();
        m_attributes.bInheritHandle = inheritable ? TRUE : FALSE;
    }
}

}  // namespace wrb
