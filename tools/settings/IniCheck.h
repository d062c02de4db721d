// Finds what is wrong in the files that an administrator edits: the two INI files and the alert texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "IniSchema.h"

namespace wrb {

struct IniFinding {
    bool isError = false;  // else a warning: the server works, perhaps not as was meant
    std::string file;
    unsigned line = 0;  // 0: the file as a whole
    std::string text;
};

// `bytes` is the file's content, `file` its name for people. Unknown sections and keys come with the nearest known one.
std::vector<IniFinding> CheckIni(IniFile kind, const std::string& file, std::string_view bytes);

// The INI files, the protection key, the limits of the upload ticket and the alert texts below a home folder with a
// backslash at its end. A missing file has no finding, but a missing key has one.
std::vector<IniFinding> CheckHomeFolder(const std::wstring& home);

}  // namespace wrb
