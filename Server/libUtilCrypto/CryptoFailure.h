// How a failure of the system's crypto functions is reported.
#pragma once

#include <cstdint>

namespace wrb {

// Throws OS::CException with the code and a text that names the call.
[[noreturn]] void ThrowCryptoFailure(uint32_t code, const char* call);

}  // namespace wrb
