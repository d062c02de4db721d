#include "WrbClient.h"

#include "CallGuard.h"
#include "MsgSerializer.h"
#include "ServiceClient.h"
#include "ServicePipes.h"

// Log lines name the module that this file was part of.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/MasterService/libWrbClient/WrbClient.cpp"

namespace {

int SendToWrbServer(CMsgSerializer& message) {
    constexpr wrb::Service kService = wrb::ServiceWithPlainLines(wrb::kWrbServerPipe);
    return wrb::SendToService(kService, WRB_HERE, message, wrb::SentBlock::Kept);
}

}  // namespace

int wrbSendMessage(CMsgSerializer& message) noexcept {
    return wrb::GuardCall(WRB_HERE, L"wrbSendMessage", [&] { return SendToWrbServer(message); });
}

int wrbSetSpywareLogEvent(int32_t event) noexcept {
    return wrb::GuardCall(WRB_HERE, L"wrbSetSpywareLogEvent", [&] {
        CMsgSerializer message(kWrbSpywareLogEvent);
        message << event;
        return SendToWrbServer(message);
    });
}
