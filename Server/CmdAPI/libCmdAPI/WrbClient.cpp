#include "WrbClient.h"

#include "CallGuard.h"
#include "MsgSerializer.h"
#include "ServiceClient.h"

namespace {

int SendToWrbServer(CMsgSerializer& message) {
    constexpr wrb::Service kService = wrb::ServiceWithPlainLines(kWrbServerPipe);
    return wrb::SendToService(kService, WRB_HERE, message, wrb::SentBlock::Kept);
}

}  // namespace

int wrbSendMessage(CMsgSerializer& message) noexcept {
    return wrb::GuardCall(L"wrbSendMessage", [&] { return SendToWrbServer(message); });
}

int wrbSetSpywareLogEvent(int32_t event) noexcept {
    return wrb::GuardCall(L"wrbSetSpywareLogEvent", [&] {
        CMsgSerializer message(kWrbSpywareLogEvent);
        message << event;
        return SendToWrbServer(message);
    });
}
