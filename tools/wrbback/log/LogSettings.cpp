#include "LogSettings.h"

#include <windows.h>

#include <cwchar>
#include <functional>
#include <utility>

#include "LogLevel.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kSection[] = L"Debug";
constexpr DWORD kValueCharacters = 1024;

std::wstring ReadValue(const std::wstring& path, const wchar_t* key) {
    wchar_t value[kValueCharacters];
    return {value, GetPrivateProfileStringW(kSection, key, L"", value, kValueCharacters, path.c_str())};
}

// Whole numbers only: "10 MB" is no number. False: the value is none.
template <typename Number>
bool ReadNumber(const std::wstring& path, const wchar_t* key, Number& number, uint64_t unit = 1) {
    const std::wstring text = ReadValue(path, key);
    constexpr std::size_t kMostDigits = 9;
    if (text.size() > kMostDigits || text.find_first_not_of(L"0123456789") != std::wstring::npos) {
        return false;
    }
    if (!text.empty()) {
        number = static_cast<Number>(std::wcstoul(text.c_str(), nullptr, 10) * unit);
    }
    return true;
}

bool ReadLevel(const std::wstring& path, const wchar_t* key, std::wstring& level) {
    const std::wstring text = ReadValue(path, key);
    level = text.empty() ? level : text;
    return FindLogLevel(WideToUtf8(level)) != nullptr;
}

}  // namespace

std::wstring ReadLogSettings(const std::wstring& iniPath, LogSettings& settings) {
    if (iniPath.empty()) {
        return {};
    }
    // The profile functions look for a relative path in the Windows folder.
    wchar_t path[MAX_PATH];
    const DWORD length = GetFullPathNameW(iniPath.c_str(), MAX_PATH, path, nullptr);
    if (length == 0 || length >= MAX_PATH || GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) {
        return L"no such file: " + iniPath;
    }
    if (const std::wstring folder = ReadValue(path, L"DebugLogFolder"); !folder.empty()) {
        settings.files.folder = folder;
    }
    unsigned flags = settings.enabled ? 1 : 0;
    const std::pair<const wchar_t*, std::function<bool(const wchar_t* key)>> keys[] = {
        {L"DebugFlags", [&](auto* key) { return ReadNumber(path, key, flags); }},
        {L"DebugLevel", [&](auto* key) { return ReadLevel(path, key, settings.level); }},
        {L"SplitSize", [&](auto* key) { return ReadNumber(path, key, settings.files.splitBytes); }},
        {L"MaxLogCount", [&](auto* key) { return ReadNumber(path, key, settings.files.maxFiles); }},
        {L"ReserveHardDiskSpacePercentage",
         [&](auto* key) { return ReadNumber(path, key, settings.files.reservePercent); }},
        {L"ReserveHardDiskSpaceSize",
         [&](auto* key) { return ReadNumber(path, key, settings.files.reserveBytes, 1024); }},
    };
    for (const auto& [key, read] : keys) {
        if (!read(key)) {
            return iniPath + L": not a value of " + key + L": " + ReadValue(path, key);
        }
    }
    settings.enabled = flags != 0;
    return {};
}

uint32_t FilterWordOf(const LogSettings& settings) {
    const LogLevelRow* const row = FindLogLevel(settings.enabled ? WideToUtf8(settings.level) : "none");
    return row != nullptr ? row->word : 0;
}

}  // namespace wrb
