#include "KeyedHash.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <bcrypt.h>

#include "CryptoFailure.h"

namespace wrb {

void FillRandom(std::span<uint8_t> bytes) {
    const NTSTATUS status =
        BCryptGenRandom(nullptr, bytes.data(), static_cast<ULONG>(bytes.size()), BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    if (status != 0) {
        ThrowCryptoFailure(static_cast<uint32_t>(status), "BCryptGenRandom");
    }
}

// The key by value: the system takes a pointer to what it does not change.
HashKey KeyedHash(HashKey key, std::string_view text) {
    HashKey hash;
    const auto bytes = reinterpret_cast<PUCHAR>(const_cast<char*>(text.data()));
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    NTSTATUS status =
        BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, BCRYPT_ALG_HANDLE_HMAC_FLAG);
    if (status == 0) {
        status = BCryptHash(algorithm, key.data(), static_cast<ULONG>(key.size()), bytes,
                            static_cast<ULONG>(text.size()), hash.data(), static_cast<ULONG>(hash.size()));
        BCryptCloseAlgorithmProvider(algorithm, 0);
    }
    if (status != 0) {
        ThrowCryptoFailure(static_cast<uint32_t>(status), "BCryptHash");
    }
    return hash;
}

std::string HexDigits(std::span<const uint8_t> bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace wrb
