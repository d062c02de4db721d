// One-way notifications to a local service, in either form of message: open the service's pipe, write the message,
// close. Nothing is retried beyond the pipe client's own waiting on a busy pipe, and nothing comes back.
//
// Both functions return 1 when the whole message was written and 0 otherwise, with one log line, and never throw. Each
// call has its own connection: callers on different threads share nothing.
#pragma once

class CCmdProtocol;
class CMsgSerializer;

namespace wrb {

// A service's pipe and the wording of its client's two log lines. The texts live as long as the program.
struct tagService {
    const wchar_t* pipe;
    const wchar_t* openFailed;  // formats of the error code, behind the pipe's name where `namesPipe` is set
    const wchar_t* sendFailed;
    bool namesPipe;
};

constexpr tagService ServiceWithPlainLines(const wchar_t* pipe) noexcept {
    return {pipe, L"Initial pipe client failed! err=%d", L"pipe send failed!. err=%d", false};
}

constexpr tagService ServiceWithPipeLines(const wchar_t* pipe) noexcept {
    return {pipe, L"init pipe client [%s] failed! err=[%d]", L"pipe [%s] send failed!. err=[%d]", true};
}

// Text form: UTF-16LE with its NUL.
int SendToService(const tagService& service, const CCmdProtocol& text) noexcept;

// What becomes of the message's block once it has been written.
enum class SentBlock {
    Kept,
    Freed,  // the message gives its block up before the write and is empty afterwards
};

// Serialized form. Finalized only once the pipe is open, so that a message that finds no service is as it was. A large
// message's file belongs to the service from then on; it is deleted when the write fails.
int SendToService(const tagService& service, CMsgSerializer& message, SentBlock block) noexcept;

}  // namespace wrb
