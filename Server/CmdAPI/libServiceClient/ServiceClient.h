// One-way messages to a local service, in either form or as plain bytes: open the service's pipe, write the message,
// close. Nothing is retried beyond the pipe client's own waiting on a busy pipe, and nothing comes back.
//
// The functions return 1 when the whole message was written and 0 otherwise, with one log line, and none throws. Each
// call has its own connection: callers on different threads share nothing.
#pragma once

#include <cstdint>

#include "DebugLog.h"

class CCmdProtocol;
class CMsgSerializer;

namespace wrb {

// A service's pipe and its client's two log lines. The texts belong to the caller.
struct Service {
    const wchar_t* pipe;
    const wchar_t* openFailed;  // formats of the error code, behind the pipe's name where `namesPipe` is set
    const wchar_t* sendFailed;
    bool namesPipe;
    uint32_t level;
};

constexpr Service ServiceWithPlainLines(const wchar_t* pipe) noexcept {
    return {pipe, L"Initial pipe client failed! err=%d", L"pipe send failed!. err=%d", false, kLogError};
}

constexpr Service ServiceWithPipeLines(const wchar_t* pipe, uint32_t level = kLogError) noexcept {
    return {pipe, L"init pipe client [%s] failed! err=[%d]", L"pipe [%s] send failed!. err=[%d]", true, level};
}

// As they are; no bytes are a connection and nothing else.
int SendToService(const Service& service, const void* bytes, uint64_t byteCount) noexcept;

// Text form: UTF-16LE with its NUL.
int SendToService(const Service& service, const CCmdProtocol& text) noexcept;

// What becomes of the message's block once it has been written.
enum class SentBlock {
    Kept,
    Freed,  // the message gives its block up before the write and is empty afterwards
};

// Serialized form. Finalized only once the pipe is open, so that a message that finds no service is as it was. A large
// message's file belongs to the service from then on; it is deleted when the write fails.
int SendToService(const Service& service, CMsgSerializer& message, SentBlock block) noexcept;

}  // namespace wrb
