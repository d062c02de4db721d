#include "StringProtection.h"

#include <gtest/gtest.h>

namespace {

using wrb::ParseProtectionKey;
using wrb::StringProtection;

constexpr wchar_t kHex[] = L"000102030405060708090a0b0c0d0e0f101112131415161718191A1B1C1D1E1F";

const wrb::StringProtection kProtection(*ParseProtectionKey(kHex));

TEST(StringProtection, EveryTextComesBackAndLooksDifferentEachTime) {
    for (const std::wstring& text :
         {std::wstring(), std::wstring(L"a"), std::wstring(L"https://ex\u00e4mple.com/*"),
          std::wstring(L"\U0001F512|\n"), std::wstring(L"nul\0inside", 10), std::wstring(100'000, L'\u6f22')}) {
        const std::wstring protectedText = kProtection.Protect(text);
        EXPECT_EQ(protectedText.substr(0, 7), L"!CRYPT!");
        EXPECT_EQ(protectedText.find_first_of(L"\r\n|"), std::wstring::npos);
        EXPECT_NE(protectedText, kProtection.Protect(text));
        EXPECT_TRUE(kProtection.Unprotect(protectedText) == text) << text.size();
    }
    EXPECT_EQ(kProtection.Protect(std::wstring(20, L'x')).size(), 7u + 64u);
}

// Made by another implementation of AES-256-GCM, with the key above and the nonce 00 01 ... 0b.
TEST(StringProtection, ReadsWhatAnotherProgramHasProtected) {
    EXPECT_EQ(kProtection.Unprotect(L"!CRYPT!AAECAwQFBgcICQoLL3aia7bf7TToOVQv3JkUCK216FnfURSHnVoeZr72sE8E4NlmMuk="),
              L"https://ex\u00e4mple.com/*");
}

TEST(StringProtection, WhatHasBeenChangedIsRefused) {
    // 20 characters: the base64 has no padding. 21: it has, and unused bits in its last character.
    for (const std::size_t length : {20u, 21u}) {
        const std::wstring sound = kProtection.Protect(std::wstring(length, L'x'));
        for (std::size_t i = 0; i < sound.size(); ++i) {
            EXPECT_FALSE(kProtection.Unprotect(sound.substr(0, i))) << i;
            for (const wchar_t c : std::wstring_view(L"AB/=! \n\u0141", 8)) {
                std::wstring changed = sound;
                changed[i] = c;
                EXPECT_EQ(kProtection.Unprotect(changed).has_value(), changed == sound) << i << " " << int{c};
                EXPECT_FALSE(kProtection.Unprotect(sound.substr(0, i) + c + sound.substr(i))) << i << " " << int{c};
            }
        }
        EXPECT_FALSE(kProtection.Unprotect(sound + L"="));
        const wrb::StringProtection other(*ParseProtectionKey(std::wstring(64, L'0')));
        EXPECT_FALSE(other.Unprotect(sound));
    }
}

TEST(StringProtection, AKeyIsSixtyFourHexadecimalDigits) {
    const auto key = ParseProtectionKey(kHex);
    ASSERT_TRUE(key);
    for (std::size_t i = 0; i < key->size(); ++i) {
        EXPECT_EQ((*key)[i], i);
    }
    const std::wstring sixtyThree(63, L'a');
    for (const std::wstring& bad :
         {std::wstring(), sixtyThree, sixtyThree + L"aa", sixtyThree + L"g", sixtyThree + L" ", sixtyThree + L"@",
          sixtyThree + L"\uff11", sixtyThree + L"\u0141"}) {
        EXPECT_FALSE(ParseProtectionKey(bad));
    }
}

}  // namespace
