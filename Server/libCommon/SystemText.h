// What the system says about an error.
#pragma once

#include <cstdint>
#include <string>

#include "Text.h"

namespace wrb {

// "Access is denied (error 5)", in the language of the system, as UTF-8. "error 5" when the system has no text. `error`
// is a Windows error, an HRESULT or an NTSTATUS; numbers beyond 16 bits are hexadecimal.
std::string SystemText(uint32_t error);

inline std::wstring WideSystemText(uint32_t error) {
    return Utf8ToWide(SystemText(error));
}

}  // namespace wrb
