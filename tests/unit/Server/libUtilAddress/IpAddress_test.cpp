#include "IpAddress.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using wrb::IpAddress;

// A text, its bytes (the last `bytes.size()`; those before are 0), and the text that is made of them.
constexpr struct {
    const wchar_t* text;
    std::string_view bytes;
    const wchar_t* scope;
    const wchar_t* shown;
} kGood[] = {
    {L"192.0.2.17", "\xFF\xFF\xC0\x00\x02\x11"sv, L"", L"192.0.2.17"},
    {L"::ffff:192.0.2.17", "\xFF\xFF\xC0\x00\x02\x11"sv, L"", L"192.0.2.17"},
    {L"::FFFF:c000:211", "\xFF\xFF\xC0\x00\x02\x11"sv, L"", L"192.0.2.17"},
    {L"255.255.255.255", "\xFF\xFF\xFF\xFF\xFF\xFF"sv, L"", L"255.255.255.255"},
    {L"::", ""sv, L"", L"::"},
    {L"::1", "\x01"sv, L"", L"::1"},
    {L"2001:DB8:0:0:1:0:0:1", "\x20\x01\x0D\xB8\0\0\0\0\0\x01\0\0\0\0\0\x01"sv, L"", L"2001:db8::1:0:0:1"},
    {L"fe80::1%5", "\xFE\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\x01"sv, L"5", L"fe80::1%5"},
    {L"fe80::1%eth0", "\xFE\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\x01"sv, L"eth0", L"fe80::1%eth0"},
};

TEST(IpAddress, BothWays) {
    for (const auto& row : kGood) {
        SCOPED_TRACE(testing::Message() << std::wstring(row.text));
        IpAddress expected;
        std::copy(row.bytes.begin(), row.bytes.end(), expected.bytes.end() - static_cast<long>(row.bytes.size()));
        expected.scope = row.scope;
        const std::optional<IpAddress> address = wrb::ParseIpAddress(row.text);
        ASSERT_TRUE(address);
        EXPECT_EQ(*address, expected);
        EXPECT_EQ(wrb::FormatIpAddress(*address), row.shown);
        EXPECT_EQ(wrb::ParseIpAddress(row.shown), address);
        const auto octets = wrb::FindIpv4(*address);
        EXPECT_EQ(octets.has_value(), row.bytes.size() == 6);
        EXPECT_TRUE(!octets || wrb::MapIpv4(*octets) == *address);
    }
}

TEST(IpAddress, WhatIsNoAddress) {
    for (const std::wstring_view text :
         {L""sv, L"1.2.3"sv, L"1.2.3.400"sv, L"1.2.3.4%5"sv, L"1.2.3.4\0"sv, L"::1\0x"sv, L" ::1"sv, L"[::1]"sv,
          L"1.2.3.4:80"sv, L"2001:db8::x"sv, L"1::2::3"sv, L"%5"sv}) {
        EXPECT_FALSE(wrb::ParseIpAddress(text)) << testing::PrintToString(std::wstring(text));
    }
}

}  // namespace
