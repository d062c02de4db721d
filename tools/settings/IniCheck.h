// Finds what is wrong in an INI file that an administrator edits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "IniSchema.h"

namespace wrb {

// How files begin that editors mark with their encoding.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
inline constexpr std::string_view kUtf16Mark = "\xFF\xFE";

struct IniFinding {
    bool isError = false;  // else a warning: the server works, perhaps not as was meant
    std::string file;
    unsigned line = 0;  // 0: the file as a whole
    std::string text;
};

// `bytes` is the file's content, `file` its name for people. Unknown sections and keys come with the nearest known one.
std::vector<IniFinding> CheckIni(IniFile kind, const std::string& file, std::string_view bytes);

}  // namespace wrb
