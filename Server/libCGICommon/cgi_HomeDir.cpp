#include "cgi_HomeDir.h"

#include <windows.h>

#include "ServerRegistry.h"
#include "cgi_Helpers.h"

namespace {

// Longer than any path of the system, so that a long one is recognised, not cut.
constexpr DWORD kModulePathCapacity = 32768;

}  // namespace

std::wstring wrb::ProgramFolder() {
    std::wstring path(kModulePathCapacity, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), kModulePathCapacity));
    path.resize(path.find_last_of(L'\\') + 1);  // nothing found: nothing left
    return path;
}

std::wstring cgi_GetHomeDir() {
    std::wstring folder = wrb::ReadLocalPath();
    if (!folder.empty() && folder.back() != L'\\') {
        folder += L'\\';
    }
    if (folder.empty() || folder.size() >= kHomeDirCapacity) {
        folder = wrb::ProgramFolder();
    }
    if (folder.size() >= kHomeDirCapacity) {
        folder.clear();
    }
    return folder;
}
