#include "EntryName.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "Text.h"

namespace {

TEST(EntryName, PlainRelativePathsPass) {
    constexpr struct {
        const char* stored;
        const wchar_t* wide;
    } kCases[] = {{"a", L"a"},        {"log.dat", L"log.dat"}, {"a\\b\\c.log", L"a\\b\\c.log"},
                  {"a/b", L"a\\b"},   {".hidden", L".hidden"}, {"a..b", L"a..b"},
                  {" a", L" a"},      {"CONSOLE", L"CONSOLE"}, {"COM10", L"COM10"},
                  {"a.nul", L"a.nul"}};
    for (const auto& name : kCases) {
        const auto checked = wrb::CheckEntryName(name.stored, false);
        ASSERT_TRUE(checked) << name.stored;
        EXPECT_EQ(checked->wide, name.wide);
        EXPECT_EQ(wrb::AnsiToWide(checked->narrow), name.wide);
    }
}

TEST(EntryName, EverythingElseIsRefused) {
    for (const char* stored : {"",
                               ".",
                               "..",
                               "...",
                               "..\\a",
                               "../a",
                               "a\\..\\b",
                               "a\\..",
                               "a\\.\\b",
                               "\\a",
                               "/a",
                               "\\\\server\\share\\a",
                               "\\\\?\\C:\\a",
                               "\\\\.\\pipe\\a",
                               "C:\\a",
                               "c:a",
                               "C:",
                               "a:b",
                               "a.txt:stream",
                               "a.txt::$DATA",
                               "a\\\\b",
                               "a\\",
                               "a.",
                               "a ",
                               "a. ",
                               "a.\\b",
                               "a \\b",
                               "CON",
                               "con",
                               "NUL.txt",
                               "a\\nul",
                               "aux .log",
                               "PRN.",
                               "COM1",
                               "lpt9.dat",
                               "COM0",
                               "conin$",
                               "CLOCK$",
                               "a\tb",
                               "\x01",
                               "a\nb",
                               "a<b",
                               "a>b",
                               "a\"b",
                               "a|b",
                               "a?",
                               "*"}) {
        EXPECT_FALSE(wrb::CheckEntryName(stored, false)) << stored;
        EXPECT_FALSE(wrb::CheckEntryName(stored, true)) << stored;
    }
    EXPECT_FALSE(wrb::CheckEntryName("COM\xC2\xB9", true)) << "a superscript one";
}

TEST(EntryName, MustComeBackFromTheCodePage) {
    const auto accented = wrb::CheckEntryName("caf\xC3\xA9", true);
    ASSERT_TRUE(accented);
    EXPECT_EQ(accented->wide, L"caf\u00E9");
    EXPECT_EQ(wrb::CheckEntryName(accented->narrow, false)->wide, accented->wide);
    // Division slash: some code pages have nothing nearer than a slash.
    const auto division = wrb::CheckEntryName(
        "a\xE2\x88\x95..\xE2\x88\x95"
        "b",
        true);
    EXPECT_EQ(division.has_value(), GetACP() == CP_UTF8);
}

}  // namespace
