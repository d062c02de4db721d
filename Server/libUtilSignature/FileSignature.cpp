#include "FileSignature.h"

#include <softpub.h>
#include <wintrust.h>

LONG wrb::VerifyFileSignature(HANDLE file, const std::wstring& path) {
    WINTRUST_FILE_INFO info{};
    info.cbStruct = sizeof info;
    info.pcwszFilePath = path.c_str();
    info.hFile = file;

    WINTRUST_DATA data{};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &info;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL | WTD_REVOCATION_CHECK_NONE;

    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const auto noWindow = static_cast<HWND>(INVALID_HANDLE_VALUE);  // nobody to ask
    const LONG result = WinVerifyTrust(noWindow, &action, &data);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    WinVerifyTrust(noWindow, &action, &data);
    return result;
}
