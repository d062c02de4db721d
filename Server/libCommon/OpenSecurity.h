// Security attributes that let every local account in: for objects that are shared with services under other accounts.
#pragma once

#include <windows.h>

namespace wrb {

// A descriptor with a present but null access-control list, and the attributes that point at it. The attributes hold
// the address of their neighbour, so the pair is neither copied nor moved. Every account may use such an object, and
// may change its access list: use it for nothing secret or critical.
struct OpenSecurity {
    SECURITY_DESCRIPTOR descriptor{};
    SECURITY_ATTRIBUTES attributes{};

    OpenSecurity() = default;
    OpenSecurity(const OpenSecurity&) = delete;
    OpenSecurity& operator=(const OpenSecurity&) = delete;
};

// Fills `security`. Returns null, or else the name of the system function that failed, whose cause is in GetLastError.
const wchar_t* InitOpenSecurity(OpenSecurity& security) noexcept;

}  // namespace wrb
