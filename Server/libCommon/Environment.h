// The variables of this process's environment.
#pragma once

#include <optional>
#include <string>

namespace wrb {

// std::nullopt when the variable is not set; an empty text when its value is empty.
std::optional<std::wstring> ReadEnvironment(const wchar_t* name);

}  // namespace wrb
