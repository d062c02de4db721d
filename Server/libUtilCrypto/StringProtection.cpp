#include "StringProtection.h"

#include <algorithm>
#include <vector>

#include "Base64.h"
#include "CryptoFailure.h"
#include "KeyedHash.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::wstring_view kPrefix = kProtectedPrefix;
constexpr std::size_t kNonceBytes = 12;
constexpr std::size_t kTagBytes = 16;

void Check(NTSTATUS status, const char* call) {
    if (!BCRYPT_SUCCESS(status)) {
        ThrowCryptoFailure(static_cast<uint32_t>(status), call);
    }
}

// Encryption writes the tag through these pointers, so `bytes` must have room for nonce and tag.
BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO ModeOf(std::vector<uint8_t>& bytes) {
    BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO mode;
    BCRYPT_INIT_AUTH_MODE_INFO(mode);
    mode.pbNonce = bytes.data();
    mode.cbNonce = kNonceBytes;
    mode.pbTag = bytes.data() + bytes.size() - kTagBytes;
    mode.cbTag = kTagBytes;
    return mode;
}

}  // namespace

std::optional<ProtectionKey> ParseProtectionKey(std::wstring_view hex) noexcept {
    ProtectionKey key{};
    if (hex.size() != key.size() * 2) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < hex.size(); ++i) {
        constexpr std::wstring_view kDigits = L"0123456789abcdefABCDEF";
        const std::size_t digit = kDigits.find(hex[i]);
        if (digit == kDigits.npos) {
            return std::nullopt;
        }
        key[i / 2] = static_cast<uint8_t>(key[i / 2] << 4 | (digit < 16 ? digit : digit - 6));
    }
    return key;
}

std::wstring MakeProtectionKey() {
    ProtectionKey key;
    FillRandom(key);
    return Utf8ToWide(HexDigits(key));
}

StringProtection::StringProtection(ProtectionKey key) {
    Check(BCryptOpenAlgorithmProvider(m_algorithm.Receive(), BCRYPT_AES_ALGORITHM, nullptr, 0),
          "BCryptOpenAlgorithmProvider");
    wchar_t mode[] = BCRYPT_CHAIN_MODE_GCM;
    Check(BCryptSetProperty(m_algorithm.Get(), BCRYPT_CHAINING_MODE, reinterpret_cast<PUCHAR>(mode), sizeof mode, 0),
          "BCryptSetProperty");
    Check(BCryptGenerateSymmetricKey(m_algorithm.Get(), m_key.Receive(), nullptr, 0, key.data(),
                                     static_cast<ULONG>(key.size()), 0),
          "BCryptGenerateSymmetricKey");
}

std::wstring StringProtection::Protect(std::wstring_view text) const {
    const std::string plain = WideToUtf8(text);
    std::vector<uint8_t> bytes(kNonceBytes + plain.size() + kTagBytes);
    uint8_t* const body = bytes.data() + kNonceBytes;
    std::ranges::copy(plain, body);
    Check(BCryptGenRandom(nullptr, bytes.data(), kNonceBytes, BCRYPT_USE_SYSTEM_PREFERRED_RNG), "BCryptGenRandom");
    BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO mode = ModeOf(bytes);
    const auto length = static_cast<ULONG>(plain.size());
    ULONG written = 0;
    Check(BCryptEncrypt(m_key.Get(), body, length, &mode, nullptr, 0, body, length, &written, 0), "BCryptEncrypt");
    std::wstring protectedText(kPrefix);
    AppendBase64(protectedText, bytes);
    return protectedText;
}

std::optional<std::wstring> StringProtection::Unprotect(std::wstring_view text) const {
    if (!text.starts_with(kPrefix)) {
        return std::nullopt;
    }
    std::optional<std::vector<uint8_t>> bytes = ParseBase64(text.substr(kPrefix.size()));
    if (!bytes || bytes->size() < kNonceBytes + kTagBytes) {
        return std::nullopt;
    }
    uint8_t* const body = bytes->data() + kNonceBytes;
    BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO mode = ModeOf(*bytes);
    const auto length = static_cast<ULONG>(bytes->size() - kNonceBytes - kTagBytes);
    ULONG written = 0;
    if (!BCRYPT_SUCCESS(BCryptDecrypt(m_key.Get(), body, length, &mode, nullptr, 0, body, length, &written, 0))) {
        return std::nullopt;
    }
    return Utf8ToWide({reinterpret_cast<const char*>(body), length});
}

}  // namespace wrb
