#include "CryptoFailure.h"

#include <string>

#include "OSException.h"
#include "SystemText.h"

void wrb::ThrowCryptoFailure(uint32_t code, const char* call) {
    throw OS::CException(code, std::string(call) + " failed: " + SystemText(code));
}
