#include "PfwLogText.h"

#include <windows.h>

#include <cstring>
#include <ctime>
#include <cwchar>

namespace wrb {
namespace {

constexpr uint32_t kMinute = 60;

// Most texts are ASCII from end to end, which is the same in every ANSI code page: the system need not be asked.
template <std::size_t N>
void WidenAnsi(const char (&text)[N], wchar_t (&wide)[N]) noexcept {
    std::size_t length = 0;
    for (; length < N - 1 && text[length] != '\0'; ++length) {
        const auto byte = static_cast<unsigned char>(text[length]);
        if (byte >= 0x80) {
            const int bytes = static_cast<int>(strnlen(text, N));
            const int characters = MultiByteToWideChar(CP_ACP, 0, text, bytes, wide, static_cast<int>(N));
            length = characters < static_cast<int>(N) ? static_cast<std::size_t>(characters) : N - 1;
            break;
        }
        wide[length] = byte;
    }
    wide[length] = L'\0';
}

void CopyInfo(const wchar_t (&text)[kPfwLogInfoCharacters], wchar_t (&copy)[kPfwLogInfoCharacters]) noexcept {
    const std::size_t length = wcsnlen(text, kPfwLogInfoCharacters - 1);
    std::wmemcpy(copy, text, length);
    copy[length] = L'\0';
}

void WriteOctets(const uint8_t (&octets)[4], wchar_t* to) noexcept {
    for (const uint8_t octet : octets) {
        if (octet >= 100) {
            *to++ = static_cast<wchar_t>(L'0' + octet / 100);
        }
        if (octet >= 10) {
            *to++ = static_cast<wchar_t>(L'0' + octet / 10 % 10);
        }
        *to++ = static_cast<wchar_t>(L'0' + octet % 10);
        *to++ = L'.';
    }
    to[-1] = L'\0';
}

void WriteNumber(int number, wchar_t* to, std::size_t digits) noexcept {
    for (; digits > 0; number /= 10) {
        to[--digits] = static_cast<wchar_t>(L'0' + number % 10);
    }
}

}  // namespace

void DecodePfwLogTexts(const SWRB_PFW_LOG_ITEM_V0& item, PfwLogTexts& texts) noexcept {
    WriteOctets(item.dwLocalIP, texts.localHost);
    WriteOctets(item.dwRemoteIP, texts.remoteHost);
    WidenAnsi(item.szPVName, texts.pvName);
    CopyInfo(item.wszPVInfo, texts.pvInfo);
}

void DecodePfwLogTexts(const SWRB_PFW_LOG_ITEM& item, PfwLogTexts& texts) noexcept {
    WidenAnsi(item.szLocalHost, texts.localHost);
    WidenAnsi(item.szRemoteHost, texts.remoteHost);
    WidenAnsi(item.szPVName, texts.pvName);
    CopyInfo(item.wszPVInfo, texts.pvInfo);
}

void LocalTimeDigits::Set(uint32_t seconds) noexcept {
    const uint32_t second = seconds % kMinute;
    if (seconds / kMinute != m_minute) {
        const auto time = static_cast<std::time_t>(seconds - second);
        std::tm local{};
        localtime_s(&local, &time);
        WriteNumber(local.tm_year + 1900, m_date, 4);
        WriteNumber(local.tm_mon + 1, m_date + 4, 2);
        WriteNumber(local.tm_mday, m_date + 6, 2);
        WriteNumber(local.tm_hour, m_time, 2);
        WriteNumber(local.tm_min, m_time + 2, 2);
        m_minute = seconds / kMinute;
    }
    WriteNumber(static_cast<int>(second), m_time + 4, 2);
}

}  // namespace wrb
