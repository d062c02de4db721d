#include "UploadFile.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "CancelAfter.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "IgnoringCase.h"
#include "LocalPath.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kNoLocalPath[] = L"no path on a local drive";
constexpr wchar_t kLink[] = L"a link";
constexpr wchar_t kElsewhere[] = L"in no folder for uploads";
constexpr DWORD kListCapacity = 4096;

// The drive is asked before anything is opened: opening a file of another machine would log on there.
bool IsLocalPath(std::wstring_view path) {
    if (!IsDrivePath(path)) {
        return false;
    }
    const wchar_t root[] = {path[0], L':', L'\\', L'\0'};
    const UINT type = GetDriveTypeW(root);
    return type == DRIVE_FIXED || type == DRIVE_REMOVABLE || type == DRIVE_RAMDISK;
}

// Whoever answers at the path learns who asks, and no more.
FileHandle Open(const std::wstring& path, DWORD access, DWORD share, DWORD flags) {
    return FileHandle(CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING,
                                  flags | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
}

// A folder on the way to an upload: links are followed.
FileHandle OpenFolder(const std::wstring& path) {
    return Open(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                FILE_FLAG_BACKUP_SEMANTICS);
}

// The path of an open file or folder, without links and "..". Empty when it is on no drive of this machine, or longer
// than the system's functions take. Allocates nothing: a folder that has just been made must not be left behind.
class FinalPath {
  public:
    explicit FinalPath(HANDLE file) noexcept {
        constexpr std::wstring_view kPrefix = L"\\\\?\\";
        const DWORD length = GetFinalPathNameByHandleW(file, m_text.data(), static_cast<DWORD>(m_text.size()),
                                                       FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
        const std::wstring_view path(m_text.data(), length < m_text.size() ? length : 0);
        if (path.starts_with(kPrefix) && IsLocalPath(path.substr(kPrefix.size()))) {
            m_path = path.substr(kPrefix.size());
        }
    }
    FinalPath(const FinalPath&) = delete;
    FinalPath& operator=(const FinalPath&) = delete;

    std::wstring_view Text() const noexcept { return m_path; }
    std::wstring Child(std::wstring_view name) const {
        return std::wstring(m_path).append(m_path.ends_with(L'\\') ? L"" : L"\\").append(name);
    }

  private:
    std::array<wchar_t, MAX_PATH + 4> m_text;
    std::wstring_view m_path;
};

bool LiesBelowFolder(std::wstring_view path, const std::wstring& folder) {
    return IsLocalPath(folder) && LiesBelow(path, FinalPath(OpenFolder(folder).Get()).Text());
}

bool IsListed(std::wstring_view path) {
    wchar_t list[kListCapacity] = L"";
    ServerIniCache().readINIString(list, L"INI_SERVER_SECTION", L"UploadFolders", L"", kListCapacity);
    return std::ranges::any_of(ListItems(list), [path](const std::wstring& folder) {
        return folder == L"*" || LiesBelowFolder(path, folder);
    });
}

// Of a final path. The folder "Upload" may be a link to one outside the home folder.
bool IsForUploads(std::wstring_view path) {
    const FinalPath home(OpenFolder(HomeFolder()).Get());
    if (path.empty() || home.Text().empty()) {
        return false;
    }
    const std::wstring upload = home.Child(L"Upload");
    return LiesBelow(path, home.Text()) ? LiesBelow(path, upload) : LiesBelowFolder(path, upload) || IsListed(path);
}

DWORD AttributesOf(HANDLE file) noexcept {
    BY_HANDLE_FILE_INFORMATION information = {};
    GetFileInformationByHandle(file, &information);
    return information.dwFileAttributes;
}

void Refuse(UploadFile& file, const wchar_t* reason) noexcept {
    file.handle.Reset();
    file.refusal = reason;
}

// Opens the folder that was made or found. A link there would lead elsewhere.
void OpenMade(UploadFile& folder) {
    folder.handle = Open(folder.path, DELETE | FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                         FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    if (!folder.handle) {
        folder.error = GetLastError();
        return;
    }
    const DWORD attributes = AttributesOf(folder.handle.Get());
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        Refuse(folder, kLink);
    } else if (!EqualIgnoringCase(FinalPath(folder.handle.Get()).Text(), folder.path)) {
        Refuse(folder, kElsewhere);
    } else if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        folder.handle.Reset();
    }
}

}  // namespace

UploadFile OpenUploadedPackage(const std::wstring& path) {
    UploadFile package;
    const CancelAfter limit(kUploadFileMilliseconds);
    if (!IsLocalPath(path)) {
        Refuse(package, kNoLocalPath);
        return package;
    }
    if (!limit) {
        package.error = limit.Error();
        return package;
    }
    package.handle = Open(path, GENERIC_READ | DELETE, FILE_SHARE_READ, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!package.handle) {
        package.error = GetLastError();
    } else if ((AttributesOf(package.handle.Get()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        Refuse(package, kLink);
    } else if (!IsForUploads(FinalPath(package.handle.Get()).Text())) {
        Refuse(package, kElsewhere);
    }
    return package;
}

UploadFile MakeUploadFolder(const std::wstring& path) {
    UploadFile folder;
    const std::size_t name = path.find_last_of(L"\\/") + 1;
    const CancelAfter limit(kUploadFileMilliseconds);
    if (!IsLocalPath(path) || !IsPlainFileName(std::wstring_view(path).substr(name))) {
        Refuse(folder, kNoLocalPath);
        return folder;
    }
    const FileHandle parent = limit ? OpenFolder(path.substr(0, name)) : FileHandle();
    if (!parent) {
        folder.error = limit ? GetLastError() : limit.Error();
        return folder;
    }
    folder.path = FinalPath(parent.Get()).Child(path.substr(name));
    if (!IsForUploads(folder.path)) {
        Refuse(folder, kElsewhere);
        return folder;
    }
    folder.error = CreateDirectoryW(folder.path.c_str(), nullptr) ? ERROR_SUCCESS : GetLastError();
    if (folder.error == ERROR_SUCCESS || folder.error == ERROR_ALREADY_EXISTS) {
        OpenMade(folder);
    }
    return folder;
}

DWORD DeleteOpened(UploadFile& file) noexcept {
    if (!file.handle) {
        return file.error;
    }
    FILE_DISPOSITION_INFO onClose = {TRUE};
    const CancelAfter limit(kUploadFileMilliseconds);  // the file is to go whether or not there is a limit
    const BOOL isMarked = SetFileInformationByHandle(file.handle.Get(), FileDispositionInfo, &onClose, sizeof onClose);
    const DWORD error = isMarked ? ERROR_SUCCESS : GetLastError();
    file.handle.Reset();
    return error;
}

}  // namespace wrb
