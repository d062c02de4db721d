#include "Base64.h"

#include <windows.h>

#include <wincrypt.h>

#include "CryptoFailure.h"

namespace wrb {

void AppendBase64(std::wstring& out, std::span<const uint8_t> bytes) {
    const std::size_t start = out.size();
    auto characters = static_cast<DWORD>((bytes.size() + 2) / 3 * 4 + 1);  // with the terminator
    if (bytes.empty()) {
        return;
    }
    out.resize(start + characters);
    if (!CryptBinaryToStringW(bytes.data(), static_cast<DWORD>(bytes.size()), CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF,
                              out.data() + start, &characters)) {
        const DWORD error = GetLastError();
        out.resize(start);
        ThrowCryptoFailure(error, "CryptBinaryToStringW");
    }
    out.resize(start + characters);
}

std::optional<std::vector<uint8_t>> ParseBase64(std::wstring_view text) {
    auto count = static_cast<DWORD>(text.size() / 4 * 3);
    std::vector<uint8_t> bytes(count);
    if (!text.empty() && !CryptStringToBinaryW(text.data(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64,
                                               bytes.data(), &count, nullptr, nullptr)) {
        return std::nullopt;
    }
    bytes.resize(count);
    // The system reads more than one spelling of the same bytes.
    std::wstring spelled;
    AppendBase64(spelled, bytes);
    return spelled == text ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace wrb
