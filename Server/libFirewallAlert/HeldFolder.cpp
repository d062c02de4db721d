#include "HeldFolder.h"

#include <windows.h>

#include <atomic>
#include <iterator>

#include "DebugLog.h"
#include "IgnoringCase.h"

namespace wrb {
namespace {

std::atomic<bool> g_isRefused = false;  // the log has the line

FileHandle Open(const std::wstring& folder, DWORD access, DWORD share, DWORD flags) {
    return FileHandle(CreateFileW(folder.c_str(), access, share, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
}

// Without links. Empty: the system has none, or a longer one than its functions take.
std::wstring FinalPath(HANDLE folder) {
    wchar_t path[MAX_PATH + 4];
    const DWORD length =
        GetFinalPathNameByHandleW(folder, path, std::size(path), FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    return length < std::size(path) ? std::wstring(path, length) : std::wstring();
}

// The home folder itself may be a link: only administrators can make it one.
bool IsInHome(HANDLE folder, const std::wstring& home, const std::wstring& name) {
    std::wstring path =
        FinalPath(Open(home, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, 0).Get());
    if (!path.empty() && !path.ends_with(L'\\')) {
        path += L'\\';
    }
    return !path.empty() && EqualIgnoringCase(FinalPath(folder), path + name);
}

bool IsFolder(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION information = {};
    GetFileInformationByHandle(file, &information);
    return (information.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) ==
           FILE_ATTRIBUTE_DIRECTORY;
}

}  // namespace

// The right to list makes the sharing count; that to read attributes alone does not.
HeldFolder::HeldFolder(const std::wstring& home, const std::wstring& name) : m_error(ERROR_PATH_NOT_FOUND) {
    if (home.empty()) {
        return;
    }
    m_folder = Open(home + name, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, FILE_FLAG_OPEN_REPARSE_POINT);
    m_error = m_folder ? ERROR_SUCCESS : GetLastError();
    if (!m_folder) {
        return;
    }
    const bool isRefused = !IsFolder(m_folder.Get()) || !IsInHome(m_folder.Get(), home, name);
    if (isRefused) {
        m_folder.Reset();
        m_error = ERROR_DIRECTORY;
    }
    if (g_isRefused.exchange(isRefused) != isRefused && isRefused) {
        WRB_LOG(kLogWarning, L"%s - the folder is a link or lies elsewhere, nothing in it is touched: %s%s",
                L"HeldFolder", home.c_str(), name.c_str());
    }
}

}  // namespace wrb
