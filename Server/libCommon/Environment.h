// The variables of this process's environment.
#pragma once

#include <optional>
#include <string>

namespace wrb {

// Nothing when the variable is not set; one that is set to nothing is empty.
std::optional<std::wstring> ReadEnvironment(const wchar_t* name);

}  // namespace wrb
