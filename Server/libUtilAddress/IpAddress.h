// IP addresses: their texts and their bytes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wrb {

// An IPv6 address in network order. An IPv4 address is mapped: 10 bytes 0, 2 bytes 0xFF, its four octets.
struct IpAddress {
    std::array<uint8_t, 16> bytes{};
    std::wstring scope;  // the scope id of an IPv6 address, a number or the name of an interface; else empty

    friend bool operator==(const IpAddress&, const IpAddress&) = default;
};

using Ipv4Octets = std::array<uint8_t, 4>;

IpAddress MapIpv4(const Ipv4Octets& octets) noexcept;

// The octets of an address that is IPv4 or mapped; else nothing.
std::optional<Ipv4Octets> FindIpv4(const IpAddress& address) noexcept;

// From "192.0.2.1" (four decimal numbers) or "fe80::1%5". Nothing from any other text, so also from one with blanks,
// brackets or a port.
std::optional<IpAddress> ParseIpAddress(std::wstring_view text);

// The usual text: IPv4 and mapped addresses with dots, others in lower case with the longest run of zeros cut out, and
// their scope id behind "%". ParseIpAddress reads it back.
std::wstring FormatIpAddress(const IpAddress& address);

// The same of an address that is 32 hexadecimal digits, as log rows have it. Digits that are missing count as 0.
std::wstring FormatHexIpAddress(const std::wstring& digits);

}  // namespace wrb
