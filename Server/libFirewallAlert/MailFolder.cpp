#include "MailFolder.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

#include "Handle.h"
#include "SRWLock.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kWaiting = L".eml";
constexpr std::wstring_view kFailed = L".failed";

CWrbSRWLock g_storing;  // held from the count of the files until the new one is there

bool IsMail(const std::wstring& name) {
    return name.ends_with(kWaiting) || name.ends_with(kFailed);
}

// Empty without a home folder: the name alone would mean the current folder.
std::wstring Below(const std::wstring& folder, const wchar_t* name) {
    return folder.empty() ? folder : folder + name;
}

// The plain files of a folder, sorted.
std::vector<std::wstring> FilesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    if (folder.empty()) {
        return names;
    }
    WIN32_FIND_DATAW found;
    const SearchHandle search(FindFirstFileW((folder + L"*").c_str(), &found));
    for (BOOL more = static_cast<bool>(search); more; more = FindNextFileW(search.Get(), &found)) {
        if ((found.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0) {
            names.emplace_back(found.cFileName);
        }
    }
    std::ranges::sort(names);
    return names;
}

uint32_t ErrorUnless(BOOL done) {
    return done ? ERROR_SUCCESS : GetLastError();
}

uint32_t CreateFolder(const std::wstring& folder) {
    const uint32_t error = ErrorUnless(CreateDirectoryW(folder.c_str(), nullptr));
    return error == ERROR_ALREADY_EXISTS ? ERROR_SUCCESS : error;
}

uint32_t WriteNewFile(const std::wstring& path, std::string_view text) {
    const FileHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return GetLastError();
    }
    DWORD written = 0;
    const uint32_t error =
        ErrorUnless(WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    return error != ERROR_SUCCESS ? error : ErrorUnless(FlushFileBuffers(file.Get()));
}

}  // namespace

MailFolder::MailFolder(const std::wstring& homeFolder)
    : m_temp(Below(homeFolder, L"Temp\\")), m_new(Below(m_temp, L"NewMail\\")), m_mail(Below(m_temp, L"Mail\\")) {}

std::wstring MailFolder::NewName(int64_t seconds) {
    static std::atomic<uint32_t> counter{0};
    return FormatWide(L"%012I64d-%08x-%08x-%08x", seconds, static_cast<unsigned>(GetCurrentProcessId()),
                      static_cast<unsigned>(GetTickCount()), counter++);
}

uint32_t MailFolder::Store(const std::wstring& name, std::string_view text) const {
    const ExclusiveGuard guard(g_storing);
    for (const std::wstring& folder : {m_temp, m_new, m_mail}) {
        if (const uint32_t error = CreateFolder(folder); error != ERROR_SUCCESS) {
            return error;
        }
    }
    if (const uint32_t error = MakeRoom(); error != ERROR_SUCCESS) {
        return error;
    }
    const std::wstring file = name + std::wstring(kWaiting);
    const std::wstring path = m_new + file;
    uint32_t error = WriteNewFile(path, text);
    if (error == ERROR_SUCCESS) {
        error = ErrorUnless(MoveFileExW(path.c_str(), (m_mail + file).c_str(), 0));
    }
    if (error != ERROR_SUCCESS) {
        DeleteFileW(path.c_str());
    }
    return error;
}

uint32_t MailFolder::MakeRoom() const {
    std::vector<std::wstring> names = FilesIn(m_mail);
    std::erase_if(names, [](const std::wstring& name) { return !IsMail(name); });
    std::size_t count = names.size();
    for (auto name = names.begin(); count >= kMostFiles && name != names.end(); ++name) {
        if (name->ends_with(kFailed) && Delete(*name) == ERROR_SUCCESS) {
            --count;
        }
    }
    return count < kMostFiles ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_QUOTA;
}

std::vector<std::wstring> MailFolder::Waiting() const {
    std::vector<std::wstring> names = FilesIn(m_mail);
    std::erase_if(names, [](const std::wstring& name) { return !name.ends_with(kWaiting); });
    return names;
}

std::optional<std::string> MailFolder::Read(const std::wstring& file) const {
    const FileHandle handle(CreateFileW((m_mail + file).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    std::string text(kMostBytes + 1, '\0');
    DWORD bytes = 0;
    if (!handle || !ReadFile(handle.Get(), text.data(), static_cast<DWORD>(text.size()), &bytes, nullptr) ||
        bytes > kMostBytes) {
        return std::nullopt;
    }
    text.resize(bytes);
    return text;
}

uint32_t MailFolder::Delete(const std::wstring& file) const {
    return ErrorUnless(DeleteFileW((m_mail + file).c_str()));
}

uint32_t MailFolder::MarkFailed(const std::wstring& file) const {
    const std::wstring path = m_mail + file;
    std::wstring failed = path.substr(0, path.size() - kWaiting.size());
    failed += kFailed;
    return ErrorUnless(MoveFileExW(path.c_str(), failed.c_str(), MOVEFILE_REPLACE_EXISTING));
}

void MailFolder::DeleteUnfinished() const {
    for (const std::wstring& name : FilesIn(m_new)) {
        DeleteFileW((m_new + name).c_str());
    }
}

}  // namespace wrb
