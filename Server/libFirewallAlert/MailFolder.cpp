#include "MailFolder.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <span>
#include <utility>

#include "CancelAfter.h"
#include "Handle.h"
#include "HeldFolder.h"
#include "SRWLock.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kTemp[] = L"Temp";
constexpr wchar_t kNew[] = L"Temp\\NewMail";
constexpr wchar_t kMail[] = L"Temp\\Mail";
constexpr std::wstring_view kWaiting = L".eml";
constexpr std::wstring_view kFailed = L".failed";
constexpr std::size_t kMostDeleted = 100;      // at a time: others can fill the folders
constexpr uint32_t kFileMilliseconds = 2'000;  // whoever holds an oplock on a file decides how long it takes

CWrbSRWLock g_storing;  // held from the count of the files until the new one is there

// A name that NewName makes.
bool IsNewName(std::wstring_view name) {
    constexpr std::wstring_view kForm = L"000000000000-xxxxxxxx-xxxxxxxx-xxxxxxxx";
    return std::ranges::equal(name, kForm, [](wchar_t character, wchar_t form) {
        const bool isDigit = character >= L'0' && character <= L'9';
        return form == L'-' ? character == form : isDigit || (form == L'x' && character >= L'a' && character <= L'f');
    });
}

bool IsWaiting(std::wstring_view name) {
    return name.ends_with(kWaiting);
}

bool IsMail(std::wstring_view name) {
    return (IsWaiting(name) || name.ends_with(kFailed)) && IsNewName(name.substr(0, name.rfind(L'.')));
}

// Empty without a home folder: the name alone would mean the current folder.
std::wstring Below(const std::wstring& home, const wchar_t* name) {
    return home.empty() ? home : home + name + L"\\";
}

// The mails of a folder that is held, waiting or failed, sorted; those found in time, where others have filled it.
std::vector<std::wstring> MailsIn(const std::wstring& folder, const CancelAfter& limit) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const SearchHandle search(FindFirstFileW((folder + L"*").c_str(), &found));
    for (BOOL more = static_cast<bool>(search); more && !limit.IsOver(); more = FindNextFileW(search.Get(), &found)) {
        if ((found.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0 &&
            IsMail(found.cFileName)) {
            names.emplace_back(found.cFileName);
        }
    }
    std::ranges::sort(names);
    return names;
}

// The first ones, at most kMostDeleted.
void DeleteSome(const std::wstring& folder, std::span<const std::wstring> names) {
    for (const std::wstring& name : names.first(std::min(names.size(), kMostDeleted))) {
        DeleteFileW((folder + name).c_str());
    }
}

uint32_t ErrorUnless(BOOL done) {
    return done ? ERROR_SUCCESS : GetLastError();
}

uint32_t CreateFolder(const std::wstring& folder) {
    const uint32_t error = ErrorUnless(CreateDirectoryW(folder.c_str(), nullptr));
    return error == ERROR_ALREADY_EXISTS ? ERROR_SUCCESS : error;
}

template <typename Work>
uint32_t InTime(Work work) {
    const CancelAfter limit(kFileMilliseconds);
    return limit ? work(limit) : limit.Error();
}

// The error of the folder, when it cannot be held, or what work(limit) returns while it is.
template <typename Work>
uint32_t InHeldFolder(const std::wstring& home, const wchar_t* name, Work work) {
    return InTime([&](const CancelAfter& limit) {
        const HeldFolder held(home, name);
        return held.Error() != ERROR_SUCCESS ? held.Error() : work(limit);
    });
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

uint32_t WriteAndRename(const std::wstring& path, const std::wstring& finalPath, std::string_view text) {
    uint32_t error = WriteNewFile(path, text);
    if (error == ERROR_SUCCESS) {
        error = ErrorUnless(MoveFileExW(path.c_str(), finalPath.c_str(), 0));
    }
    if (error != ERROR_SUCCESS) {
        DeleteFileW(path.c_str());
    }
    return error;
}

// The error of a file that is too long is ERROR_FILE_TOO_LARGE.
uint32_t ReadWhole(const std::wstring& path, std::string& text) {
    const FileHandle handle(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!handle) {
        return GetLastError();
    }
    text.resize(MailFolder::kMostBytes + 1);
    DWORD bytes = 0;
    const uint32_t error =
        ErrorUnless(ReadFile(handle.Get(), text.data(), static_cast<DWORD>(text.size()), &bytes, nullptr));
    text.resize(bytes);
    return error == ERROR_SUCCESS && bytes > MailFolder::kMostBytes ? ERROR_FILE_TOO_LARGE : error;
}

}  // namespace

MailFolder::MailFolder(const std::wstring& homeFolder)
    : m_home(homeFolder), m_new(Below(homeFolder, kNew)), m_mail(Below(homeFolder, kMail)) {}

std::wstring MailFolder::NewName(int64_t seconds) {
    static std::atomic<uint32_t> counter{0};
    return FormatWide(L"%012I64d-%08x-%08x-%08x", seconds, static_cast<unsigned>(GetCurrentProcessId()),
                      static_cast<unsigned>(GetTickCount()), counter++);
}

uint32_t MailFolder::Store(const std::wstring& name, std::string_view text) const {
    const ExclusiveGuard guard(g_storing);
    const auto write = [&](const CancelAfter& limit) {
        const std::wstring file = name + std::wstring(kWaiting);
        const uint32_t error = MakeRoom(limit);
        return error != ERROR_SUCCESS ? error : WriteAndRename(m_new + file, m_mail + file, text);
    };
    return InTime([&](const CancelAfter&) {
        for (const std::wstring& folder : {Below(m_home, kTemp), m_new, m_mail}) {
            if (const uint32_t error = CreateFolder(folder); error != ERROR_SUCCESS) {
                return error;
            }
        }
        return InHeldFolder(m_home, kNew, [&](const CancelAfter&) { return InHeldFolder(m_home, kMail, write); });
    });
}

uint32_t MailFolder::MakeRoom(const CancelAfter& limit) const {
    std::vector<std::wstring> failed = MailsIn(m_mail, limit);
    if (limit.IsOver()) {
        return ERROR_OPERATION_ABORTED;
    }
    const std::size_t excess = failed.size() - std::min(failed.size(), kMostFiles - 1);
    const std::size_t waiting = std::erase_if(failed, [](const std::wstring& name) { return IsWaiting(name); });
    DeleteSome(m_mail, std::span(failed).first(std::min(excess, failed.size())));
    return waiting < kMostFiles ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_QUOTA;
}

std::vector<std::wstring> MailFolder::Waiting() const {
    std::vector<std::wstring> names;
    InHeldFolder(m_home, kMail, [&](const CancelAfter& limit) {
        names = MailsIn(m_mail, limit);
        return ERROR_SUCCESS;
    });
    std::erase_if(names, [](const std::wstring& name) { return !IsWaiting(name); });
    names.resize(std::min(names.size(), kMostFiles));
    return names;
}

std::optional<std::string> MailFolder::Read(const std::wstring& file) const {
    std::string text;
    const uint32_t error =
        InHeldFolder(m_home, kMail, [&](const CancelAfter&) { return ReadWhole(m_mail + file, text); });
    return error == ERROR_SUCCESS ? std::optional(std::move(text)) : std::nullopt;
}

uint32_t MailFolder::Delete(const std::wstring& file) const {
    return InHeldFolder(m_home, kMail,
                        [&](const CancelAfter&) { return ErrorUnless(DeleteFileW((m_mail + file).c_str())); });
}

uint32_t MailFolder::MarkFailed(const std::wstring& file) const {
    const std::wstring failed = file.substr(0, file.size() - kWaiting.size()) + std::wstring(kFailed);
    return InHeldFolder(m_home, kMail, [&](const CancelAfter&) {
        return ErrorUnless(MoveFileExW((m_mail + file).c_str(), (m_mail + failed).c_str(), MOVEFILE_REPLACE_EXISTING));
    });
}

void MailFolder::DeleteUnfinished() const {
    InHeldFolder(m_home, kNew, [&](const CancelAfter& limit) {
        DeleteSome(m_new, MailsIn(m_new, limit));
        return ERROR_SUCCESS;
    });
}

}  // namespace wrb
