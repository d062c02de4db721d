// Texts from elsewhere, for screens and logs.
#pragma once

#include <string>
#include <string_view>

namespace wrb {

// Whatever could break the line, steer a terminal or hide a part of the text is written as an escape, \n \r \t or else
// \uXXXX; everything else as it stands.
std::wstring VisibleText(std::wstring_view text);

}  // namespace wrb
