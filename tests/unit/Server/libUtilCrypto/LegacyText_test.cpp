// Base64 and the legacy forms, against values of another program.
#include <gtest/gtest.h>

#include "Base64.h"
#include "LegacyText.h"

namespace {

TEST(Base64, ReadsOnlyWhatItWrites) {
    const std::vector<uint8_t> bytes = {0xFB, 0xEF, 0xBE, 0x00, 0x41};
    std::wstring text = L"before ";
    wrb::AppendBase64(text, bytes);
    wrb::AppendBase64(text, {});
    EXPECT_EQ(text, L"before ++++AEE=");
    EXPECT_EQ(wrb::ParseBase64(L"++++AEE="), bytes);
    EXPECT_EQ(wrb::ParseBase64(L""), std::vector<uint8_t>());
    for (const wchar_t* const bad :
         {L"++++AEE", L"++++AEF=", L"++++\nAEE=", L" ++++AEE=", L"++++AEE=x", L"+", L"----"}) {
        EXPECT_FALSE(wrb::ParseBase64(bad)) << testing::PrintToString(std::wstring(bad));
    }
}

TEST(LegacyText, HashesAndEncryptsAsOtherProgramsDo) {
    constexpr wrb::LegacyDesKey kKey = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};
    EXPECT_EQ(wrb::LegacyMd5Text(L"secret"), L"09433e1853385270b51511571e35eeca");
    EXPECT_EQ(wrb::LegacyMd5Text(L"p\u00e4ss"), L"f2d4bedbae9a7fd1802d68f65b358f2a");
    EXPECT_EQ(wrb::LegacyDesText(L"secret", kKey), L"38A517C1636F4E1B06D9E8F98EDBAA28");
    EXPECT_EQ(wrb::LegacyDesText(L"abcd", kKey), L"D1A34D98627727E3B3A463B95F7B8B40") << "a whole block gets another";
}

}  // namespace
