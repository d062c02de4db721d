// Objects that programs of several sessions share by name.
//
// A service runs in session 0, whose own names are the machine's: the other sessions find them under `Global\`.
#pragma once

#include <windows.h>

#include <cwchar>
#include <string>

#include "Handle.h"

namespace wrb {

// `open` takes a name and returns a handle, null when it fails. The object of the caller's session comes first. Null:
// GetLastError tells; ERROR_FILE_NOT_FOUND when neither is there.
template <typename Open>
KernelHandle OpenInAnySession(const wchar_t* name, Open open) {
    KernelHandle own(open(name));
    if (own || GetLastError() != ERROR_FILE_NOT_FOUND || std::wcschr(name, L'\\') != nullptr) {
        return own;
    }
    return KernelHandle(open((L"Global\\" + std::wstring(name)).c_str()));
}

}  // namespace wrb
