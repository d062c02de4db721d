#include "OSException.h"

#include <cstdio>

namespace OS {

void ThrowHResult(int32_t status, const char* what) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08x", static_cast<unsigned>(status));
    throw CException(static_cast<uint32_t>(status), std::string(what) + ", HRESULT=" + code);
}

}  // namespace OS
