// Finds what is wrong in the files that an administrator edits: the two INI files and the alert texts.
#pragma once

#include <string>
#include <vector>

#include "IniCheck.h"

namespace wrb {

// The INI files, the protection key, the limits of the upload ticket and the alert texts below a home folder with a
// backslash at its end. A missing file has no finding, but a missing key has one.
std::vector<IniFinding> CheckHomeFolder(const std::wstring& home);

}  // namespace wrb
