// Makes text from peers safe for screens and logs.
#pragma once

#include <string>
#include <string_view>

namespace wrb {

// Characters that could break the line, control a terminal or hide part of the text become escapes: \n, \r, \t or
// \uXXXX. All others stay unchanged.
std::wstring VisibleText(std::wstring_view text);

}  // namespace wrb
