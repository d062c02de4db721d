#include "HomeFolder.h"

#include <windows.h>

#include "ServerRegistry.h"

namespace wrb {

std::wstring ProgramFolder() {
    constexpr DWORD kPathCapacity = 32768;  // longer than any path of the system: a long one is recognised, not cut
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
