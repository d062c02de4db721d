// The agent-command service's client. Each call is one serialized message, without an answer; docs/wire-formats.md has
// its body. Every function returns 1 when the message was written and 0 otherwise, with one log line; none throws. Any
// thread.
#pragma once

#include <cstdint>

class CMsgSerializer;

inline constexpr wchar_t kWrbSpywareLogEvent[] = L"WC_SET_SPYWARE_LOG_EVENT";

// Any message; it is finalized here.
int wrbSendMessage(CMsgSerializer& message) noexcept;

// Says that spyware material of an agent lies unpacked: 0 its logs, 2 a backup manifest.
int wrbSetSpywareLogEvent(int32_t event) noexcept;
