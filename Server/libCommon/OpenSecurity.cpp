#include "OpenSecurity.h"

namespace wrb {

const wchar_t* InitOpenSecurity(OpenSecurity& security) noexcept {
    if (!InitializeSecurityDescriptor(&security.descriptor, SECURITY_DESCRIPTOR_REVISION)) {
        return L"InitializeSecurityDescriptor";
    }
    if (!SetSecurityDescriptorDacl(&security.descriptor, TRUE, nullptr, FALSE)) {
        return L"SetSecurityDescriptorDacl";
    }
    security.attributes.nLength = sizeof security.attributes;
    security.attributes.lpSecurityDescriptor = &security.descriptor;
    security.attributes.bInheritHandle = FALSE;
    return nullptr;
}

}  // namespace wrb
