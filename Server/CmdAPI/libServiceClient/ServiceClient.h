// One message to a local service: open the service's pipe, write, close. Nothing is retried beyond the pipe client's
// own waiting on a busy pipe, and nothing comes back.
//
// The functions return 1 when the whole message was written and 0 otherwise, with one log line in the name of the
// module that sends. Each call has its own connection: callers on different threads share nothing.
#pragma once

#include <windows.h>

#include <cstdint>
#include <span>

#include "CallGuard.h"
#include "PipeClient.h"

class CCmdProtocol;
class CMsgSerializer;

namespace wrb {

// A service's pipe, its client's two log lines, and the key of the server INI that says how many seconds each wait for
// the service may take. The texts belong to the caller.
struct Service {
    const wchar_t* pipe;
    const wchar_t* openFailed;  // formats of `name`, where there is one, and the error code
    const wchar_t* sendFailed;
    const wchar_t* name = nullptr;
    uint32_t level = kLogError;
    const char* timeoutKey = "ServiceTimeoutSeconds";
    Patience* patience = nullptr;  // of the pipe client
};

constexpr Service ServiceWithPlainLines(const wchar_t* pipe) noexcept {
    return {pipe, L"Initial pipe client failed! err=%d", L"pipe send failed!. err=%d"};
}

constexpr Service ServiceWithPipeLines(const wchar_t* pipe, uint32_t level = kLogError) noexcept {
    return {pipe, L"init pipe client [%s] failed! err=[%d]", L"pipe [%s] send failed!. err=[%d]", pipe, level};
}

// Bytes as they are; none are a connection and nothing else. Never throws.
int SendToService(const Service& service, SourcePlace from, std::span<const uint8_t> bytes) noexcept;

// Text form: UTF-16LE with its NUL. Never throws.
int SendToService(const Service& service, SourcePlace from, const CCmdProtocol& text) noexcept;

// Whether a written message keeps its block.
enum class SentBlock {
    Kept,
    Freed,  // the message gives its block up before the write and is empty afterwards
};

// Serialized form. Finalized only once the pipe is open, so that a message that finds no service is as it was. A large
// message's file belongs to the service from then on; it is deleted when the write fails. Throws when memory is
// exhausted.
int SendToService(const Service& service, SourcePlace from, CMsgSerializer& message, SentBlock block);

// For clients that write in a way of their own.
enum class Delivery {
    Done,
    NotOpened,  // these two have their cause in GetLastError, and the service's line tells it
    NotWritten,
    Logged,  // the step has written its own line
};

int ReportDelivery(const Service& service, SourcePlace from, Delivery delivery) noexcept;

// The setting behind the service's key: 1 to 3600 seconds; 30 without it and for any other number.
uint32_t TimeoutMilliseconds(const Service& service) noexcept;

// Opens the pipe and lets `write` write to the client.
template <typename Write>
int Deliver(const Service& service, SourcePlace from, Write write) {
    CPipeClient client(service.patience);
    return ReportDelivery(
        service, from,
        client.Initial(service.pipe, TimeoutMilliseconds(service)) ? write(client) : Delivery::NotOpened);
}

// The bytes that travel, up to the NUL and with it; valid as long as the text.
std::span<const uint8_t> BytesOf(const CCmdProtocol& text) noexcept;

// Deletes a large message's file unless the message was sent.
class SentFileGuard {
  public:
    explicit SentFileGuard(CMsgSerializer& message) noexcept : m_message(message) {}
    ~SentFileGuard();
    SentFileGuard(const SentFileGuard&) = delete;
    SentFileGuard& operator=(const SentFileGuard&) = delete;

    // Passes on what the send returned.
    int Keep(int sent) noexcept {
        m_sent = sent == 1;
        return sent;
    }

  private:
    CMsgSerializer& m_message;
    bool m_sent = false;
};

}  // namespace wrb
