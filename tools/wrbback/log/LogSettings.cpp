#include "LogSettings.h"

#include <windows.h>

#include <cwchar>

#include "LogFilter.h"
#include "ReceivedLine.h"

namespace wrb {
namespace {

constexpr wchar_t kSection[] = L"Debug";
constexpr DWORD kValueCharacters = 1024;

std::wstring ReadValue(const std::wstring& path, const wchar_t* key) {
    wchar_t value[kValueCharacters];
    return {value, GetPrivateProfileStringW(kSection, key, L"", value, kValueCharacters, path.c_str())};
}

// Whole numbers only: "10 MB" is no number.
template <typename Number>
void ReadNumber(const std::wstring& path, const wchar_t* key, Number& number, uint64_t unit = 1) {
    const std::wstring text = ReadValue(path, key);
    constexpr std::size_t kMostDigits = 9;
    if (!text.empty() && text.size() <= kMostDigits && text.find_first_not_of(L"0123456789") == std::wstring::npos) {
        number = static_cast<Number>(std::wcstoul(text.c_str(), nullptr, 10) * unit);
    }
}

}  // namespace

bool ReadLogSettings(const std::wstring& iniPath, LogSettings& settings) {
    if (iniPath.empty()) {
        return true;
    }
    // The profile functions look for a relative path in the Windows folder.
    wchar_t path[MAX_PATH];
    const DWORD length = GetFullPathNameW(iniPath.c_str(), MAX_PATH, path, nullptr);
    if (length == 0 || length >= MAX_PATH || GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    unsigned flags = settings.enabled ? 1 : 0;
    ReadNumber(path, L"DebugFlags", flags);
    settings.enabled = flags != 0;
    if (const std::wstring level = ReadValue(path, L"DebugLevel"); ParseLogLevel(level)) {
        settings.level = level;
    }
    if (const std::wstring folder = ReadValue(path, L"DebugLogFolder"); !folder.empty()) {
        settings.files.folder = folder;
    }
    ReadNumber(path, L"SplitSize", settings.files.splitBytes);
    ReadNumber(path, L"MaxLogCount", settings.files.maxFiles);
    ReadNumber(path, L"ReserveHardDiskSpacePercentage", settings.files.reservePercent);
    ReadNumber(path, L"ReserveHardDiskSpaceSize", settings.files.reserveBytes, 1024);
    return true;
}

uint32_t FilterWordOf(const LogSettings& settings) {
    return ParseLogLevel(settings.enabled ? settings.level : L"none").value_or(0);
}

}  // namespace wrb
