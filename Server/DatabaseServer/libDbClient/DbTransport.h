// How a request reaches the database server and how its answer comes back.
//
// One connection to "DbServerNamePipe" is one request: the header frame of DbApiHeader.h, then the request. An answer
// comes over a second connection, which the server makes to a reply pipe that exists before the request leaves. A text
// request names that pipe by its reply id, a serialized one by its message id.
//
// Every function returns 1 for success and 0 for failure. A failure leaves one log line, which the failing step writes;
// dbSendAndRecv adds its own to that of dbSend. A service that is down is not waited for. Each call has its own client,
// pipe and message: callers on different threads share nothing. A wait for an answer ends when the time is up, and at
// once when the server's process ends. Those in the namespace serve this library, whose public functions guard their
// calls: they throw when memory is exhausted. The others never throw.
#pragma once

#include <cstdint>

class CCmdProtocol;
class CMsgSerializer;
class CPipeServer;

// How long every read of this library waits for an answer.
inline constexpr uint32_t kDbAnswerSeconds = 600;

// In place of the reply id of a request without an answer.
inline constexpr int32_t kDbNoReplyId = -1;

namespace wrb {

// Low 16 bits of the thread id above the low 16 bits of the tick count. Unique among the threads of a process at one
// time, not among requests: a thread that asks twice within one tick uses the same pipe name twice.
constexpr int32_t MakeDbReplyId(uint32_t threadId, uint32_t tickMilliseconds) {
    return static_cast<int32_t>((threadId << 16) | (tickMilliseconds & 0xFFFF));
}

// For the current thread, now.
int32_t NewDbReplyId();

// Text form, no answer: 1 as soon as the bytes are on the pipe.
int Send(const CCmdProtocol& request, const wchar_t* caller);

// Text form with answer: opens the reply pipe "DbCln_%d" on `server`, then sends. The caller takes the answer with
// FetchCmd of the same server, which gives up after `timeoutSeconds`.
int SendAndRecv(const CCmdProtocol& request, int32_t replyId, CPipeServer& server, uint32_t timeoutSeconds,
                const wchar_t* caller);

// dbSendAndRecv without its guard.
int SendAndRecv(CMsgSerializer& message, const wchar_t* caller, uint32_t timeoutSeconds);

}  // namespace wrb

// Serialized form, no answer. Finalizes the message once the header is on the pipe, so that one that finds no service
// is as it was. When the pipe cannot be opened or written, the cause stays in GetLastError.
int dbSend(CMsgSerializer& message, const wchar_t* caller) noexcept;

// Serialized form with answer: on success `message` holds the answer, with its cursor at the body. An answer without a
// byte is a failure: it is how the server says that it does not know the agent.
int dbSendAndRecv(CMsgSerializer& message, const wchar_t* caller, uint32_t timeoutSeconds) noexcept;
