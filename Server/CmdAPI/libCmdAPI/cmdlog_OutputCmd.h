// The log pool's client. A log row travels as one JSON text in a serialized message, without an answer;
// docs/wire-formats.md has the columns. Every function returns 1 when the message was written and 0 otherwise, with a
// log line and the cause in GetLastError; none throws. Any thread.
#pragma once

#include <cstdint>

#include "FirewallLogEntry.h"

class CMsgSerializer;

inline constexpr wchar_t kSendCfwLog[] = L"CMDLOGV2_SEND_CFWLOG";
inline constexpr wchar_t kSendRestoreLog[] = L"CMDLOGV2_SEND_RESTORELOG";

// Any message; it is finalized here, and empty once the service has been reached.
int cmdlog_OutputCmd(CMsgSerializer& message) noexcept;

// One row of the firewall log.
int cmdlog_SendCfwLog(const wrb::FirewallLogEntry& entry) noexcept;

// One row of the restore log, under a new log id and the current time.
int dbSetRestoreLogW(const wchar_t* uid, int32_t logType, int32_t result) noexcept;
