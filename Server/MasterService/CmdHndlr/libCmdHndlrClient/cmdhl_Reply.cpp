#include "cmdhl_Reply.h"

#include "ServiceClient.h"

unsigned cmdhl_OutputCommand(const wchar_t* pipeName, const void* body, uint64_t byteCount) {
    const wrb::Service peer = wrb::ServiceWithPipeLines(pipeName, kLogNotice5);
    return static_cast<unsigned>(wrb::SendToService(peer, WRB_HERE, {static_cast<const uint8_t*>(body), byteCount}));
}
