// The version of the project, as CMakeLists.txt has it, and the commit that was built.
#pragma once

#include <string>
#include <string_view>

namespace wrb {

std::string Version();  // "0.1.0"

// "wrbhost 0.1.0 (commit 0123456789ab)"
std::string VersionText(std::string_view program);

}  // namespace wrb
