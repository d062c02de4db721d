// The files that are linked into the program: templates, style sheet, script. resources.rc lists them.
#pragma once

#include <string>
#include <string_view>

namespace wrb {

// The file's text, UTF-8. Throws std::logic_error when the program has none of that name. Valid as long as the program.
std::string_view ResourceText(const char* name);

// Changes with the text: part of the address of a file that browsers keep.
std::string ResourceVersion(const char* name);

}  // namespace wrb
