#include "SpillDirectory.h"

#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "CancelAfter.h"
#include "HomeFolder.h"
#include "IgnoringCase.h"
#include "LastError.h"

namespace wrb {
namespace {

// GetTempFileNameW takes no more than the first three characters of the prefix into the name.
constexpr const wchar_t* kPrefix = L"mstmp";
constexpr std::size_t kPrefixTaken = 3;
constexpr std::wstring_view kExtension = L".tmp";

// With one backslash at its end, so that a name can follow.
void AddDirectory(std::vector<std::wstring>& directories, std::wstring directory) {
    directory.resize(directory.find_last_not_of(L'\\') + 1);
    if (!directory.empty()) {
        directories.push_back(directory + L'\\');
    }
}

// Empty when the text is no path at all or is longer than any that a sender makes.
std::wstring FullPath(const std::wstring& path) {
    wchar_t full[MAX_PATH + 1];
    const bool embeddedNul = path.find(L'\0') != std::wstring::npos;
    const DWORD length = path.empty() || embeddedNul ? 0 : GetFullPathNameW(path.c_str(), MAX_PATH + 1, full, nullptr);
    return length > 0 && length <= MAX_PATH ? std::wstring(full, length) : std::wstring();
}

// "mst", one to eight hexadecimal digits, ".tmp". Nothing else fits in, so no stream, device or wildcard either.
bool IsSpillName(std::wstring_view name) {
    if (name.size() < kPrefixTaken + 1 + kExtension.size() || name.size() > kPrefixTaken + 8 + kExtension.size()) {
        return false;
    }
    const std::wstring_view digits = name.substr(kPrefixTaken, name.size() - kPrefixTaken - kExtension.size());
    return EqualIgnoringCase(name.substr(0, kPrefixTaken), std::wstring_view(kPrefix, kPrefixTaken)) &&
           EqualIgnoringCase(name.substr(name.size() - kExtension.size()), kExtension) &&
           digits.find_first_not_of(L"0123456789abcdefABCDEF") == std::wstring_view::npos;
}

}  // namespace

std::vector<std::wstring> SpillDirectories() {
    std::vector<std::wstring> directories;
    wchar_t folder[MAX_PATH + 2];
    if (const std::wstring installed = ReadLocalPath(); !installed.empty()) {
        AddDirectory(directories, installed + (installed.back() == L'\\' ? L"temp" : L"\\temp"));
    }
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

void DeleteSpillFile(const std::wstring& path) noexcept {
    const KeepLastError keep;
    const CancelAfter limit(kSpillFileMilliseconds);
    DeleteFileW(path.c_str());
}

std::wstring AcceptedSpillPath(const std::wstring& path) {
    const std::wstring full = FullPath(path);
    const std::wstring name = full.substr(full.rfind(L'\\') + 1);
    const auto isHere = [&](const std::wstring& directory) {
        return EqualIgnoringCase(full, FullPath(directory + name));
    };
    return IsSpillName(name) && std::ranges::any_of(SpillDirectories(), isHere) ? full : std::wstring();
}

}  // namespace wrb
