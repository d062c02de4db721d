// What the system says about an error.
#pragma once

#include <cstdint>
#include <string>

namespace wrb {

// "Access is denied (error 5)", in the language of the system, as UTF-8. "error 5" when the system has no text.
std::string SystemText(uint32_t error);

}  // namespace wrb
