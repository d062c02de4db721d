#include "WrbClient.h"

#include "DbGuard.h"
#include "MsgSerializer.h"
#include "ServiceClient.h"

int wrbSendMessage(CMsgSerializer& message) noexcept {
    constexpr wrb::Service kService = wrb::ServiceWithPlainLines(kWrbServerPipe);
    return wrb::SendToService(kService, message, wrb::SentBlock::Kept);
}

int wrbSetSpywareLogEvent(int32_t event) noexcept {
    return wrb::GuardDbCall(L"wrbSetSpywareLogEvent", [&] {
        CMsgSerializer message(kWrbSpywareLogEvent);
        message << event;
        return wrbSendMessage(message);
    });
}
