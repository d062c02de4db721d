#include "ProtectionKeyFile.h"

#include <iterator>

#include "CancelAfter.h"

namespace wrb {
namespace {

constexpr uint32_t kFileMilliseconds = 2'000;  // whoever holds an oplock on the file decides how long it takes

}  // namespace

std::optional<ProtectionKey> ReadProtectionKey(const std::wstring& serverIni) {
    wchar_t text[sizeof(ProtectionKey) * 2 + 2];  // a key that is too long shows
    const CancelAfter limit(kFileMilliseconds);
    GetPrivateProfileStringW(kProtectionKeySection, kProtectionKeyName, L"", text, static_cast<DWORD>(std::size(text)),
                             serverIni.c_str());
    return ParseProtectionKey(text);
}

}  // namespace wrb
