// The access list that the system keeps for an object, as text.
#pragma once

#include <windows.h>
// The next two need windows.h before them.
#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>

#include "Handle.h"

namespace wrb::test {

inline std::string AccessOf(HANDLE object) {
    LocalMemory descriptor;
    EXPECT_EQ(GetSecurityInfo(object, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, nullptr,
                              descriptor.Receive()),
              DWORD{ERROR_SUCCESS});
    LocalMemory text;
    EXPECT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorA(
        descriptor.Get(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, reinterpret_cast<LPSTR*>(text.Receive()),
        nullptr));
    return text ? static_cast<const char*>(text.Get()) : "";
}

// That of a pipe.
inline std::string AccessOfPipe(const std::wstring& name) {
    const FileHandle pipe(CreateFileW((L"\\\\.\\pipe\\" + name).c_str(), GENERIC_WRITE | READ_CONTROL, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(pipe) << GetLastError();
    return AccessOf(pipe.Get());
}

}  // namespace wrb::test
