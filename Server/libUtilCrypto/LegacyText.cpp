#include "LegacyText.h"

#include <windows.h>

#include <wincrypt.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "CryptoFailure.h"
#include "Handle.h"
#include "Text.h"

namespace wrb {
namespace {

// CryptoAPI: CNG's DES is not on every system that has the rest of it.
struct ProviderTraits {
    using Type = HCRYPTPROV;
    static Type Empty() noexcept { return 0; }
    static void Close(Type provider) noexcept { CryptReleaseContext(provider, 0); }
};
struct HashTraits {
    using Type = HCRYPTHASH;
    static Type Empty() noexcept { return 0; }
    static void Close(Type hash) noexcept { CryptDestroyHash(hash); }
};
struct KeyTraits {
    using Type = HCRYPTKEY;
    static Type Empty() noexcept { return 0; }
    static void Close(Type key) noexcept { CryptDestroyKey(key); }
};

// What CryptImportKey takes as PLAINTEXTKEYBLOB.
struct KeyBlob {
    BLOBHEADER header;
    DWORD size;
    BYTE key[8];
};

void Check(BOOL done, const char* call) {
    if (!done) {
        ThrowCryptoFailure(GetLastError(), call);
    }
}

UniqueHandle<ProviderTraits> OpenProvider() {
    UniqueHandle<ProviderTraits> provider;
    Check(CryptAcquireContextW(provider.Receive(), nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT),
          "CryptAcquireContextW");
    return provider;
}

std::vector<BYTE> BytesOf(std::wstring_view text) {
    std::vector<BYTE> bytes(text.size() * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}

std::wstring Hex(std::span<const BYTE> bytes, const wchar_t* format) {
    std::wstring digits;
    for (const BYTE byte : bytes) {
        digits += FormatWide(format, byte);
    }
    return digits;
}

}  // namespace

std::wstring LegacyMd5Text(std::wstring_view text) {
    const UniqueHandle<ProviderTraits> provider = OpenProvider();
    UniqueHandle<HashTraits> hash;
    const std::vector<BYTE> bytes = BytesOf(text);
    BYTE digest[16];
    DWORD size = sizeof digest;
    Check(CryptCreateHash(provider.Get(), CALG_MD5, 0, 0, hash.Receive()), "CryptCreateHash");
    Check(CryptHashData(hash.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), 0), "CryptHashData");
    Check(CryptGetHashParam(hash.Get(), HP_HASHVAL, digest, &size, 0), "CryptGetHashParam");
    return Hex(digest, L"%02x");
}

std::wstring LegacyDesText(std::wstring_view text, const LegacyDesKey& key) {
    const UniqueHandle<ProviderTraits> provider = OpenProvider();
    UniqueHandle<KeyTraits> handle;
    KeyBlob blob{{PLAINTEXTKEYBLOB, CUR_BLOB_VERSION, 0, CALG_DES}, sizeof blob.key, {}};
    std::ranges::copy(key, blob.key);
    Check(CryptImportKey(provider.Get(), reinterpret_cast<const BYTE*>(&blob), sizeof blob, 0, 0, handle.Receive()),
          "CryptImportKey");
    const DWORD mode = CRYPT_MODE_ECB;
    Check(CryptSetKeyParam(handle.Get(), KP_MODE, reinterpret_cast<const BYTE*>(&mode), 0), "CryptSetKeyParam");
    std::vector<BYTE> bytes = BytesOf(text);
    auto size = static_cast<DWORD>(bytes.size());
    bytes.resize(bytes.size() / sizeof blob.key * sizeof blob.key + sizeof blob.key);  // the padding has 1 to 8 bytes
    Check(CryptEncrypt(handle.Get(), 0, TRUE, 0, bytes.data(), &size, static_cast<DWORD>(bytes.size())),
          "CryptEncrypt");
    bytes.resize(size);
    return Hex(bytes, L"%02X");
}

}  // namespace wrb
