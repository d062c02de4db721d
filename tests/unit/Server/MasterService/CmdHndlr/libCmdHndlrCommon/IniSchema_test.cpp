// The table of known INI keys, held against docs/settings.md.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "ChildProcess.h"
#include "IniSchema.h"
#include "TempFolder.h"
#include "Text.h"

namespace {

bool IsKnown(const std::wstring& word) {
    for (const wrb::IniSection& section : wrb::KnownIniSections()) {
        if (section.name == word || wrb::FindIniKey(section, word) != nullptr) {
            return true;
        }
    }
    return false;
}

TEST(IniSchema, HasEveryKeyOfThePage) {
    std::istringstream page(wrb::test::ReadAll(wrb::test::ProgramFolder() + L"settings.md"));
    const std::regex word("`(?!CMDHL_|\\w+Cache`)(\\w+)`");
    int words = 0;
    for (std::string line; std::getline(page, line);) {
        // The table does not have the keys of a section that may have any.
        if (!line.starts_with("| `") || line.find("`Global Setting`") != line.npos) {
            continue;
        }
        // Some tables have the section in the first column and the key in the second.
        const std::size_t second = line.find("` | `");
        const std::string cells = line.substr(0, line.find(" | ", second == line.npos ? 0 : second + 3));
        for (std::sregex_iterator at(cells.begin(), cells.end(), word), end; at != end; ++at, ++words) {
            EXPECT_TRUE(IsKnown(wrb::Utf8ToWide((*at)[1].str()))) << (*at)[1];
        }
    }
    EXPECT_GT(words, 100) << "the page is not read";
}

}  // namespace
