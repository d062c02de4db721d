#include "ServerRegistry.h"

#include <windows.h>

#include <cwchar>

namespace wrb {
namespace {

constexpr wchar_t kInformationKey[] = L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information";
constexpr wchar_t kLocalPathValue[] = L"Local_Path";
constexpr DWORD kCharacterLimit = 1024;

}  // namespace

std::wstring ReadLocalPath() {
    wchar_t text[kCharacterLimit];
    DWORD bytes = sizeof text;
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kInformationKey, kLocalPathValue,
                                        RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr, text, &bytes);
    if (status != ERROR_SUCCESS) {
        return {};
    }
    // The value may have been stored with zeros inside or with several at its end.
    return std::wstring(text, wcsnlen(text, bytes / sizeof(wchar_t)));
}

}  // namespace wrb
