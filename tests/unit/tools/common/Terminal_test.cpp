#include "Terminal.h"

#include <gtest/gtest.h>

namespace wrb {
namespace {

TEST(Terminal, LinesBreakBetweenColumnsAndGoOnUnderTheLastThatLeavesRoom) {
    const struct {
        const char* text;
        const char* wrapped;  // to 20 characters
    } kRows[] = {
        {"", ""},
        {"short\nand short", "short\nand short\n"},
        {"words that are more than twenty\n\nx", "words that are more\nthan twenty\n\nx\n"},
        {"  get  Shows the settings of an agent", "  get  Shows the\n       settings of\n       an agent\n"},
        {"ok  host  up 4 s, process 3", "ok  host  up 4 s,\n          process 3\n"},
        {"key  1               bit  from", "key  1\n     bit  from\n"},
        {"name          1234  5678  90", "name          1234\n    5678  90\n"},
        {"xxxxxxxxxxxxxxxxxxxxxxxxx", "xxxxxxxxxxxxxxxxxxxx\nxxxxx\n"},
        {"\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4 123456789   ",
         "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4 123456789\n"},
    };
    for (const auto& [text, wrapped] : kRows) {
        EXPECT_EQ(WrapText(text, 20), wrapped);
        EXPECT_EQ(WrapText(text, std::nullopt), text);
    }
}

}  // namespace
}  // namespace wrb
