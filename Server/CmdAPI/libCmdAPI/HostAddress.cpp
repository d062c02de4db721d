#include "HostAddress.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <array>
#include <cstdint>

namespace wrb {
namespace {

using Address = std::array<uint8_t, 16>;

constexpr std::size_t kMapped = 12;  // where the four octets of an IPv4 address stand

Address ParseAddress(const std::wstring& text) {
    Address address{};
    if (InetPtonW(AF_INET, text.c_str(), address.data() + kMapped) == 1) {
        address[kMapped - 2] = address[kMapped - 1] = 0xFF;
    } else if (InetPtonW(AF_INET6, text.substr(0, text.find(L'%')).c_str(), address.data()) != 1) {
        address.fill(0);  // a text that fails half-way may have left something
    }
    return address;
}

}  // namespace

std::string HostAddressHex(const wchar_t* address) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const uint8_t byte : ParseAddress(address == nullptr ? std::wstring() : std::wstring(address))) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace wrb
