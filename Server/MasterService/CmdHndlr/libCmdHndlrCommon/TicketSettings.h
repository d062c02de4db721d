// The settings of the log-upload ticket, with defaults and bounds applied. docs/settings.md has the keys.
#pragma once

#include <cstdint>

#include "INICache.h"

namespace wrb {

enum class TicketSetting : uint32_t {
    Free,         // clients admitted at once
    Ahead,        // clients admitted while the queue is short
    Rate,         // clients a second, never 0
    MaxWaitTime,  // the times are in seconds
    UploadTime,
    CleanUpInterval,
    kCount
};

// The server's thread numbers: defaults and upper bound of the first two settings.
struct TicketThreads {
    uint32_t fixed;
    uint32_t maximum;
};

// Every call reads through the caches, which must outlive the object. Numbers count as unsigned. Any thread.
class TicketSettings {
  public:
    TicketSettings(CINICache& scanIni, CINICache& serverIni) : m_scanIni(scanIni), m_serverIni(serverIni) {}

    bool IsInForce() const;  // if not, every client may upload at once
    TicketThreads Threads() const;
    uint32_t Read(TicketSetting setting, const TicketThreads& threads) const;

    static const char* Key(TicketSetting setting) noexcept;  // in "LOG_TICKET_SECTION" of the server INI

  private:
    CINICache& m_scanIni;
    CINICache& m_serverIni;
};

}  // namespace wrb
