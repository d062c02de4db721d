// Security attributes that let every local account in: for objects that are shared with services under other accounts.
#pragma once

#include <windows.h>

namespace wrb {

// A descriptor with a present but null access-control list, and the attributes that point at it. The attributes hold
// the address of their neighbour, so the pair is neither copied nor moved. Anyone may use, and even re-protect, an
// object made with it: put nothing behind it that is secret or that must not be disturbed.
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
