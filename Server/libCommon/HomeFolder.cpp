#include "HomeFolder.h"

#include <windows.h>

#include <cwchar>

namespace wrb {

namespace {

LSTATUS ReadValue(DWORD types, void* data, DWORD* bytes) {
    return RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information", L"Local_Path",
                        types | RRF_SUBKEY_WOW6464KEY, nullptr, data, bytes);
}

}  // namespace

std::wstring ReadLocalPath() {
    wchar_t text[1024];
    DWORD bytes = sizeof text;
    const LSTATUS status = ReadValue(RRF_RT_REG_SZ, text, &bytes);
    // The value may have been stored with zeros inside or with several at its end.
    return status == ERROR_SUCCESS ? std::wstring(text, wcsnlen(text, bytes / sizeof(wchar_t))) : std::wstring();
}

bool HasLocalPath() {
    return ReadValue(RRF_RT_ANY, nullptr, nullptr) == ERROR_SUCCESS;
}

std::wstring ProgramFolder() {
    constexpr DWORD kPathCapacity = 32768;  // the longest path that Windows has
    std::wstring path(kPathCapacity, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), kPathCapacity));
    path.resize(path.find_last_of(L'\\') + 1);  // no backslash: empty
    return path;
}

std::wstring HomeFolder() {
    std::wstring folder = ReadLocalPath();
    if (!folder.empty() && folder.back() != L'\\') {
        folder += L'\\';
    }
    if (folder.empty() || folder.size() >= kHomeFolderCapacity) {
        folder = ProgramFolder();
    }
    if (folder.size() >= kHomeFolderCapacity) {
        folder.clear();
    }
    return folder;
}

}  // namespace wrb
