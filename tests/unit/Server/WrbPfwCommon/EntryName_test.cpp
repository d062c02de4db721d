#include "EntryName.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "Text.h"

namespace {

TEST(EntryName, OnlyPlainRelativePathsPass) {
    for (const char* name : {"a", "a\\b\\c.log", ".hidden", "a..b", " a", "CONSOLE", "COM10", "a.nul"}) {
        const auto checked = wrb::CheckEntryName(name, false);
        ASSERT_TRUE(checked) << name;
        EXPECT_EQ(checked->narrow, name);
        EXPECT_EQ(checked->wide, wrb::AnsiToWide(name));
    }
    EXPECT_EQ(wrb::CheckEntryName("a/b", false)->wide, L"a\\b");
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
