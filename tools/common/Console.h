// Text on the standard streams. A console gets UTF-16 and so shows every character with any code page; a file or a
// pipe gets the UTF-8 bytes unchanged, with no CR added.
//
// One call is one write, so lines from several threads do not mix. Nothing is buffered and errors are ignored: a
// closed stream drops the text.
#pragma once

#include <string_view>

namespace wrb {

void PrintOut(std::string_view utf8);
void PrintErr(std::string_view utf8);

}  // namespace wrb
