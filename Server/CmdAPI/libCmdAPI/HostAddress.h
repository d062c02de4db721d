// An address text in the form in which the log pool keeps it.
#pragma once

#include <string>

namespace wrb {

// The 16 bytes of the IPv6 address as 32 upper-case hexadecimal digits; an IPv4 address is mapped
// (0:0:0:0:0:FFFF:a.b.c.d) and an IPv6 address loses its zone ("%5"). What is not an address, null and empty too, gives
// 32 zeros: the row is kept.
std::string HostAddressHex(const wchar_t* address);

}  // namespace wrb
