#include "SpillDirectory.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <string_view>

#include "ServerRegistry.h"

namespace wrb {
namespace {

// GetTempFileNameW takes no more than the first three characters of the prefix into the name.
constexpr const wchar_t* kPrefix = L"mstmp";
constexpr std::size_t kPrefixTaken = 3;
constexpr std::wstring_view kExtension = L".tmp";

// "C:\\" is a root; "C:" would be whatever directory is current on that drive.
bool IsDriveRoot(std::wstring_view directory) {
    return directory.size() == 3 && directory.ends_with(L":\\");
}

void AddDirectory(std::vector<std::wstring>& directories, std::wstring directory) {
    while (!directory.empty() && directory.back() == L'\\' && !IsDriveRoot(directory)) {
        directory.pop_back();
    }
    if (!directory.empty()) {
        directories.push_back(std::move(directory));
    }
}

std::wstring InstalledTempFolder() {
    std::wstring folder = ReadLocalPath();
    if (!folder.empty()) {
        folder += folder.back() == L'\\' ? L"temp" : L"\\temp";
    }
    return folder;
}

// Empty when the text is no path at all or is longer than any that a sender makes.
std::wstring FullPath(const std::wstring& path) {
    wchar_t full[MAX_PATH + 1];
    const bool embeddedNul = path.find(L'\0') != std::wstring::npos;
    const DWORD length = path.empty() || embeddedNul ? 0 : GetFullPathNameW(path.c_str(), MAX_PATH + 1, full, nullptr);
    return length > 0 && length <= MAX_PATH ? std::wstring(full, length) : std::wstring();
}

bool EqualNames(std::wstring_view left, std::wstring_view right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

// "mst", one to eight hexadecimal digits, ".tmp". Nothing else fits in, so no stream, device or wildcard either.
bool IsSpillName(std::wstring_view name) {
    if (name.size() < kPrefixTaken + 1 + kExtension.size() || name.size() > kPrefixTaken + 8 + kExtension.size()) {
        return false;
    }
    const std::wstring_view digits = name.substr(kPrefixTaken, name.size() - kPrefixTaken - kExtension.size());
    return EqualNames(name.substr(0, kPrefixTaken), std::wstring_view(kPrefix, kPrefixTaken)) &&
           EqualNames(name.substr(name.size() - kExtension.size()), kExtension) &&
           digits.find_first_not_of(L"0123456789abcdefABCDEF") == std::wstring_view::npos;
}

}  // namespace

std::vector<std::wstring> SpillDirectories() {
    std::vector<std::wstring> directories;
    wchar_t folder[MAX_PATH + 2];
    AddDirectory(directories, InstalledTempFolder());
    if (SHGetFolderPathW(nullptr, CSIDL_INTERNET_CACHE | CSIDL_FLAG_CREATE, nullptr, 0, folder) == S_OK) {
        AddDirectory(directories, folder);
    }
    const DWORD length = GetTempPathW(MAX_PATH + 2, folder);
    if (length > 0 && length < MAX_PATH + 2) {
        AddDirectory(directories, folder);
    }
    return directories;
}

std::wstring CreateFileInSpillDirectory() {
    std::wstring path(MAX_PATH, L'\0');  // allocated before the file is there
    for (const std::wstring& directory : SpillDirectories()) {
        if (GetTempFileNameW(directory.c_str(), kPrefix, 0, path.data()) != 0) {
            path.resize(wcslen(path.c_str()));
            return path;
        }
    }
    return {};
}

std::wstring AcceptedSpillPath(const std::wstring& path) {
    const std::wstring full = FullPath(path);
    const std::size_t slash = full.rfind(L'\\');
    if (slash == std::wstring::npos || !IsSpillName(std::wstring_view(full).substr(slash + 1))) {
        return {};
    }
    const std::wstring_view name = std::wstring_view(full).substr(slash + 1);
    const std::vector<std::wstring> directories = SpillDirectories();
    const bool ours = std::any_of(directories.begin(), directories.end(), [&](const std::wstring& directory) {
        return EqualNames(full, FullPath(directory + (IsDriveRoot(directory) ? L"" : L"\\") + std::wstring(name)));
    });
    return ours ? full : std::wstring();
}

}  // namespace wrb
