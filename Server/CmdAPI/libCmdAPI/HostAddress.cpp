#include "HostAddress.h"

#include "IpAddress.h"

std::string wrb::HostAddressHex(const wchar_t* address) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const IpAddress parsed = ParseIpAddress(address == nullptr ? L"" : address).value_or(IpAddress());
    std::string text;
    for (const uint8_t byte : parsed.bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}
