#include "cmdhl_Reply.h"

#include "ReplyPipeName.h"
#include "ServiceClient.h"

unsigned cmdhl_OutputCommand(const wchar_t* pipeName, const void* body, uint64_t byteCount) {
    wrb::Service peer = wrb::ServiceWithPipeLines(pipeName, kLogNotice5);
    peer.timeoutKey = "ReplyTimeoutSeconds";
    if (wrb::NamesServicePipe(pipeName)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return static_cast<unsigned>(wrb::ReportDelivery(peer, WRB_HERE, wrb::Delivery::NotOpened));
    }
    return static_cast<unsigned>(wrb::SendToService(peer, WRB_HERE, {static_cast<const uint8_t*>(body), byteCount}));
}
