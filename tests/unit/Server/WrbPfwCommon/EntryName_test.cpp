#include "EntryName.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

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
    std::istringstream names(R"(. .. ... ..\a ../a a\..\b a\.. a\.\b a\\b a\ a. a.\b \a /a \\server\share\a \\?\C:\a
        \\.\pipe\a C:\a c:a C: a.txt:stream a.txt::$DATA CON con NUL.txt a\nul PRN. COM1 lpt9.dat COM0 conin$ CLOCK$
        a<b a>b a"b a|b a? *)");
    std::vector<std::string> refused{"", "a ", "a. ", "a \\b", "aux .log", "a\tb", "\x01", "a\nb"};
    refused.insert(refused.end(), std::istream_iterator<std::string>(names), {});
    for (const std::string& name : refused) {
        EXPECT_FALSE(wrb::CheckEntryName(name, false)) << name;
        EXPECT_FALSE(wrb::CheckEntryName(name, true)) << name;
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
