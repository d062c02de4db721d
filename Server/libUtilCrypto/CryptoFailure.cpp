#include "CryptoFailure.h"

#include <cstdio>

#include "OSException.h"

void wrb::ThrowCryptoFailure(uint32_t code, const char* call) {
    char text[80];
    std::snprintf(text, sizeof text, "%s failed, status=0x%08x", call, static_cast<unsigned>(code));
    throw OS::CException(code, text);
}
