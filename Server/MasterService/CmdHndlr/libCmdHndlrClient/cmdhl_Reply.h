// The one way in which an answer leaves the library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "DebugLog.h"

// Connects to the pipe of that bare name, writes the body once and closes; an empty body is a connection without a
// byte. A peer that is busy or does not read is waited for as long as the server INI says (ReplyTimeoutSeconds), and
// no longer than 500 ms while as many other answers as it allows (SlowReplies) already wait longer. The host's own pipe
// and those of the services are refused with ERROR_ACCESS_DENIED (5), however spelled. Returns 1 when all of it was
// written. Returns 0 after a log line of level 5 that holds the system's error code; the answer, or its rest, is then
// lost, and the peer's own time-out ends its wait. Any thread.
unsigned cmdhl_OutputCommand(const wchar_t* pipeName, const void* body, uint64_t byteCount);

namespace wrb {

// The same for a text, sent without a terminator.
inline bool Reply(const wchar_t* pipeName, std::wstring_view text) {
    return cmdhl_OutputCommand(pipeName, text.data(), text.size() * sizeof(wchar_t)) == 1;
}

// The same, and waits until the peer has read all of it. ReplyTimeoutSeconds limits all of this together. False also
// when the peer has not read all of it by then.
bool ReplyAndAwaitReader(const wchar_t* pipeName, std::wstring_view text);

// The same as Reply, and a line more when it fails: "HANDLER - cmdhl_OutputCommand failed."
inline void ReplyOrLog(const wchar_t* handler, const std::wstring& pipeName, std::wstring_view text) {
    if (!Reply(pipeName.c_str(), text)) {
        WRB_LOG(kLogError, L"%s - cmdhl_OutputCommand failed.", handler);
    }
}

}  // namespace wrb
