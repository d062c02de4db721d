#include "DataFolders.h"

#include <windows.h>

#include "Handle.h"
#include "HomeFolder.h"

namespace wrb {
namespace {

bool DeleteTree(const std::wstring& folder);

bool DeleteEntry(const std::wstring& path, DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return DeleteFileW(path.c_str()) != 0;
    }
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? RemoveDirectoryW(path.c_str()) != 0 : DeleteTree(path);
}

bool DeleteContents(const std::wstring& folder) {
    bool done = true;
    const std::wstring prefix = folder + L'\\';
    WIN32_FIND_DATAW entry{};
    const SearchHandle search(FindFirstFileW((prefix + L'*').c_str(), &entry));
    for (BOOL found = static_cast<bool>(search); found; found = FindNextFileW(search.Get(), &entry)) {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L"..") {
            done = DeleteEntry(prefix + name, entry.dwFileAttributes) && done;
        }
    }
    return done;
}

bool DeleteTree(const std::wstring& folder) {
    return DeleteContents(folder) && RemoveDirectoryW(folder.c_str());
}

bool DeleteIfThere(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES || DeleteEntry(path, attributes);
}

}  // namespace

bool DeleteData(const ServiceSpec& spec, const std::wstring& home) {
    bool done = DeleteIfThere(home + L"Private") && DeleteIfThere(home + kScanIniFile);
    for (const wchar_t* folder : spec.folders) {
        done = DeleteIfThere(home + folder) && done;
    }
    return done;
}

}  // namespace wrb
