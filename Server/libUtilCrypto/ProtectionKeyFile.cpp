#include "ProtectionKeyFile.h"

#include <iterator>

namespace wrb {

std::optional<ProtectionKey> ReadProtectionKey(const std::wstring& serverIni) {
    wchar_t text[sizeof(ProtectionKey) * 2 + 2];  // a key that is too long shows
    GetPrivateProfileStringW(kProtectionKeySection, kProtectionKeyName, L"", text, static_cast<DWORD>(std::size(text)),
                             serverIni.c_str());
    return ParseProtectionKey(text);
}

}  // namespace wrb
