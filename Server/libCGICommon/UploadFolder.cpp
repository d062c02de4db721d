#include "UploadFolder.h"

// windows.h first: bcrypt.h relies on it.
#include <windows.h>

#include <bcrypt.h>

#include <cstdint>

#include "DebugLog.h"
#include "Handle.h"
#include "IgnoringCase.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kExtension[] = L".tmp";
constexpr std::size_t kNameDigits = 32;

bool IsUploadName(std::wstring_view name) {
    return name.size() == kNameDigits + 4 && name.substr(kNameDigits) == kExtension &&
           name.find_first_not_of(L"0123456789ABCDEF") == kNameDigits;
}

// Creates the file and writes the bytes; leaves no file when that fails. Returns the Windows error.
DWORD WriteNewFile(const std::wstring& path, std::string_view bytes, const wchar_t* function) {
    FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return GetLastError();
    }
    DWORD written = 0;
    if (!WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        const DWORD error = GetLastError();
        file.Reset();
        DeleteUpload(path, function);
        return error;
    }
    return ERROR_SUCCESS;
}

}  // namespace

UploadFolder::UploadFolder(const std::wstring& homeFolder)
    : m_folder(homeFolder.empty() ? homeFolder : homeFolder + L"Temp\\") {}

std::wstring UploadFolder::CreatePath(uint32_t& error) const {
    if (m_folder.empty()) {
        error = ERROR_PATH_NOT_FOUND;
        return {};
    }
    uint32_t random[4];
    if (BCryptGenRandom(nullptr, reinterpret_cast<unsigned char*>(random), sizeof random,
                        BCRYPT_USE_SYSTEM_PREFERRED_RNG) < 0) {
        error = ERROR_GEN_FAILURE;  // its status is no Windows error
        return {};
    }
    // The second is for a folder without a backslash at its end; ours has one.
    const wchar_t* const format = m_folder.ends_with(L'\\') ? L"%s%08X%08X%08X%08X.tmp" : L"%s\\%08X%08X%08X%08X.tmp";
    return FormatWide(format, m_folder.c_str(), random[0], random[1], random[2], random[3]);
}

std::wstring UploadFolder::Store(std::string_view bytes, const wchar_t* function) const {
    uint32_t error = ERROR_SUCCESS;
    std::wstring path = CreatePath(error);
    if (!path.empty()) {
        CreateDirectoryW(m_folder.c_str(), nullptr);  // usually it exists
        error = WriteNewFile(path, bytes, function);
    }
    if (error != ERROR_SUCCESS) {
        WRB_LOG(kLogError, L"%s - Fail to store an upload: %s", function, WideSystemText(error).c_str());
        path.clear();
    }
    return path;
}

std::wstring UploadFolder::PathOf(std::wstring_view name) const {
    const std::size_t folder = m_folder.size();
    const bool inFolder = name.size() > folder && EqualIgnoringCase(name.substr(0, folder), m_folder);
    const std::wstring_view bare = inFolder ? name.substr(folder) : name;
    return folder != 0 && IsUploadName(bare) ? m_folder + std::wstring(bare) : std::wstring();
}

bool DeleteUpload(const std::wstring& path, const wchar_t* function) {
    if (!DeleteFileW(path.c_str())) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogFatal2, L"%s - Fail to delete file, error = [%ld]", function, static_cast<long>(error));
        return false;
    }
    return true;
}

}  // namespace wrb
