#include "IpAddress.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace wrb {
namespace {

constexpr std::array<uint8_t, 12> kMappedPrefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
constexpr std::size_t kLongestText = 46;  // of an address without its scope id, terminator included

}  // namespace

IpAddress MapIpv4(const Ipv4Octets& octets) noexcept {
    IpAddress address;
    std::ranges::copy(octets, std::ranges::copy(kMappedPrefix, address.bytes.begin()).out);
    return address;
}

std::optional<Ipv4Octets> FindIpv4(const IpAddress& address) noexcept {
    if (!std::equal(kMappedPrefix.begin(), kMappedPrefix.end(), address.bytes.begin())) {
        return std::nullopt;
    }
    Ipv4Octets octets;
    std::copy(address.bytes.begin() + kMappedPrefix.size(), address.bytes.end(), octets.begin());
    return octets;
}

std::optional<IpAddress> ParseIpAddress(std::wstring_view text) {
    const std::wstring host(text.substr(0, text.find(L'%')));
    // The system reads up to the first NUL.
    if (host.find(L'\0') != host.npos) {
        return std::nullopt;
    }
    Ipv4Octets octets;
    if (host.size() == text.size() && InetPtonW(AF_INET, host.c_str(), octets.data()) == 1) {
        return MapIpv4(octets);
    }
    IpAddress address;
    if (InetPtonW(AF_INET6, host.c_str(), address.bytes.data()) != 1) {
        return std::nullopt;
    }
    address.scope = text.substr(std::min(host.size() + 1, text.size()));
    return address;
}

std::wstring FormatIpAddress(const IpAddress& address) {
    wchar_t text[kLongestText] = L"";
    if (const std::optional<Ipv4Octets> octets = FindIpv4(address)) {
        InetNtopW(AF_INET, octets->data(), text, std::size(text));
        return text;
    }
    InetNtopW(AF_INET6, address.bytes.data(), text, std::size(text));
    return address.scope.empty() ? text : std::wstring(text) + L'%' + address.scope;
}

std::wstring FormatHexIpAddress(const std::wstring& digits) {
    IpAddress address;
    for (std::size_t i = 0; i < address.bytes.size(); ++i) {
        const std::wstring byte = digits.substr(std::min(2 * i, digits.size()), 2);
        address.bytes[i] = static_cast<uint8_t>(std::wcstoul(byte.c_str(), nullptr, 16));
    }
    return FormatIpAddress(address);
}

}  // namespace wrb
