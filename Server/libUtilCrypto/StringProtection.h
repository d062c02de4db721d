// Protection of single texts on their way to agents: AES-256 in Galois/counter mode. docs/wire-formats.md has the form.
//
// The same text looks different each time. A text that has been changed, shortened or made under another key is
// recognised. A text of n UTF-8 bytes becomes 7 + 4 * ceil((n + 28) / 3) characters. Unsound UTF-16 comes back as
// U+FFFD.
#pragma once

#include <windows.h>

#include <bcrypt.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Handle.h"

namespace wrb {

using ProtectionKey = std::array<uint8_t, 32>;

// Where the server INI has the key of the installation.
inline constexpr wchar_t kProtectionKeySection[] = L"INI_SERVER_SECTION";
inline constexpr wchar_t kProtectionKeyName[] = L"StringProtectionKey";

// How a protected text begins.
inline constexpr wchar_t kProtectedPrefix[] = L"!CRYPT!";

// From 64 hexadecimal digits in upper or lower case; nothing from any other text.
std::optional<ProtectionKey> ParseProtectionKey(std::wstring_view hex) noexcept;

// A new key from the system's random generator, as such digits. Throws OS::CException when the generator fails.
std::wstring MakeProtectionKey();

// Both directions with one key. One thread at a time.
class StringProtection {
  public:
    // Throws OS::CException, as Protect does, when the system's crypto library fails.
    explicit StringProtection(ProtectionKey key);

    std::wstring Protect(std::wstring_view text) const;

    // Nothing for what this key has not protected, in these very characters.
    std::optional<std::wstring> Unprotect(std::wstring_view text) const;

  private:
    struct AlgorithmTraits {
        using Type = BCRYPT_ALG_HANDLE;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type algorithm) noexcept { BCryptCloseAlgorithmProvider(algorithm, 0); }
    };
    struct KeyTraits {
        using Type = BCRYPT_KEY_HANDLE;
        static Type Empty() noexcept { return nullptr; }
        static void Close(Type key) noexcept { BCryptDestroyKey(key); }
    };

    UniqueHandle<AlgorithmTraits> m_algorithm;  // outlives the key
    UniqueHandle<KeyTraits> m_key;
};

}  // namespace wrb
