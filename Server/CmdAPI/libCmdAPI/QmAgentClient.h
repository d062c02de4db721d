// The central-management agent's client. Each call is one message, without an answer; docs/wire-formats.md has its
// fields. Every function returns 1 when the message was written and 0 otherwise, with one log line and the cause in
// GetLastError; none throws. Any thread.
#pragma once

#include <cstdint>

#include "FirewallLogEntry.h"

class CCmdProtocol;

inline constexpr wchar_t kQmRtsStatusChange[] = L"CMDHQM_EVENT_RTS_STATUS_CHANGE";
inline constexpr wchar_t kQmSendFirewallLog[] = L"CMDHQM_SEND_FIREWALL_LOG";

// Any command text.
int qmaSend(const CCmdProtocol& text) noexcept;

// The new status of the real-time scan.
int qmaSendRtsStatusChange(uint32_t status) noexcept;

// The entry's date and time travel as calendar seconds, by the daylight-saving rule that is in force now.
int qmaSendFirewallLog(const wrb::FirewallLogEntry& entry) noexcept;
