// The texts of firewall log records as UTF-16, into buffers of the caller: nothing is allocated.
#pragma once

#include <cstddef>
#include <cstdint>

#include "PfwLogRecord.h"

namespace wrb {

// What both versions of a record have, texts decoded and terminated. It is large; one is enough for a whole file.
struct PfwLogTexts {
    wchar_t localHost[kPfwLogHostBytes];
    wchar_t remoteHost[kPfwLogHostBytes];
    wchar_t pvName[kPfwLogNameBytes];
    wchar_t pvInfo[kPfwLogInfoCharacters];
};

// A text that fills its field to the last byte loses its last character to the terminator.
void DecodePfwLogTexts(const SWRB_PFW_LOG_ITEM_V0& item, PfwLogTexts& texts) noexcept;
void DecodePfwLogTexts(const SWRB_PFW_LOG_ITEM& item, PfwLogTexts& texts) noexcept;

// Times as the server's local time. Converting a time zone costs more than all the rest of a record, and records of one
// file lie close together: the minute converted last is kept. One thread at a time.
class LocalTimeDigits {
  public:
    // Seconds since 1970-01-01 00:00 UTC.
    void Set(uint32_t seconds) noexcept;

    const wchar_t* Date() const noexcept { return m_date; }  // YYYYMMDD
    const wchar_t* Time() const noexcept { return m_time; }  // HHMMSS

  private:
    wchar_t m_date[9] = L"";
    wchar_t m_time[7] = L"";
    uint32_t m_minute = UINT32_MAX;  // of which the texts are; no time has this one
};

}  // namespace wrb
