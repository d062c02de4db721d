#include "PfwLogText.h"

#include <windows.h>

#include <cstring>
#include <ctime>

#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kMinute = 60;

// Most texts are ASCII from end to end, which is the same in every ANSI code page.
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
    std::size_t length = 0;
    for (; length < kPfwLogInfoCharacters - 1 && text[length] != L'\0'; ++length) {
        copy[length] = text[length];
    }
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

}  // namespace

void DecodePfwLogTexts(const SWRB_PFW_LOG_ITEM_V0& item, tagPfwLogTexts& texts) noexcept {
    WriteOctets(item.dwLocalIP, texts.localHost);
    WriteOctets(item.dwRemoteIP, texts.remoteHost);
    WidenAnsi(item.szPVName, texts.pvName);
    CopyInfo(item.wszPVInfo, texts.pvInfo);
}

void DecodePfwLogTexts(const SWRB_PFW_LOG_ITEM& item, tagPfwLogTexts& texts) noexcept {
    WidenAnsi(item.szLocalHost, texts.localHost);
    WidenAnsi(item.szRemoteHost, texts.remoteHost);
    WidenAnsi(item.szPVName, texts.pvName);
    CopyInfo(item.wszPVInfo, texts.pvInfo);
}

void CLocalTimeText::Set(uint32_t seconds) noexcept {
    const uint32_t second = seconds % kMinute;
    if (seconds / kMinute != m_minute) {
        const auto time = static_cast<std::time_t>(seconds - second);
        std::tm local{};
        localtime_s(&local, &time);
        FormatInto(m_date, std::size(m_date), L"%04d%02d%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
        FormatInto(m_time, std::size(m_time), L"%02d%02d%02d", local.tm_hour, local.tm_min, 0);
        m_minute = seconds / kMinute;
    }
    m_time[4] = static_cast<wchar_t>(L'0' + second / 10);
    m_time[5] = static_cast<wchar_t>(L'0' + second % 10);
}

}  // namespace wrb
