#include "FolderAccess.h"

#include <windows.h>
// After windows.h, whose types they use.
#include <aclapi.h>
#include <sddl.h>

#include "Handle.h"

namespace wrb {
namespace {

constexpr DWORD kReadRights = FILE_GENERIC_READ | FILE_EXECUTE;
constexpr DWORD kChangeRights = kReadRights | FILE_GENERIC_WRITE | DELETE;

}  // namespace

uint32_t GrantFolder(const std::wstring& folder, const std::wstring& sid, FolderRight right) {
    std::wstring name = folder;
    LocalMemory account;
    LocalMemory descriptor;
    if (!ConvertStringSidToSidW(sid.c_str(), account.Receive())) {
        return GetLastError();
    }
    PACL present = nullptr;
    if (const DWORD error = GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                                  nullptr, &present, nullptr, descriptor.Receive());
        error != ERROR_SUCCESS) {
        return error;
    }
    EXPLICIT_ACCESSW access{};
    access.grfAccessPermissions = right == FolderRight::Change ? kChangeRights : kReadRights;
    access.grfAccessMode = GRANT_ACCESS;
    access.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.ptstrName = static_cast<wchar_t*>(account.Get());
    LocalMemory wanted;
    if (const DWORD error = SetEntriesInAclW(1, &access, present, reinterpret_cast<PACL*>(wanted.Receive()));
        error != ERROR_SUCCESS) {
        return error;
    }
    return SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                 static_cast<PACL>(wanted.Get()), nullptr);
}

uint32_t MakePrivateFolder(const std::wstring& folder) {
    LocalMemory descriptor;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)", SDDL_REVISION_1,
                                                              descriptor.Receive(), nullptr)) {
        return GetLastError();
    }
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.Get(), FALSE};
    return CreateDirectoryW(folder.c_str(), &attributes) ? ERROR_SUCCESS : GetLastError();
}

}  // namespace wrb
