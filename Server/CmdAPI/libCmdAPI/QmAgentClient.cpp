#include "QmAgentClient.h"

#include <cstdint>
#include <string>

#include "CalendarTime.h"
#include "CallGuard.h"
#include "CmdProtocol.h"
#include "DebugLog.h"
#include "ServiceClient.h"
#include "ServicePipes.h"

namespace {

constexpr wrb::Service kAgent = wrb::ServiceWithPlainLines(wrb::kQmAgentPipe);

// The agent sends the address. It is cut at the first control character: a TAB would move the numbers that follow.
void AppendAddress(CCmdProtocol& text, const wchar_t* address) {
    int64_t length = 0;
    while (address != nullptr && address[length] >= L' ') {
        ++length;
    }
    text.Append(address, length);
}

CCmdProtocol MakeFirewallLog(const wrb::FirewallLogEntry& entry) {
    CCmdProtocol text;
    // 64 bits wide: the text form has no number of that width.
    text << kQmSendFirewallLog << entry.uid << std::to_wstring(ConvertDateTime(entry.date, entry.time, 0));
    AppendAddress(text, entry.localHost);
    AppendAddress(text, entry.remoteHost);
    for (const uint32_t number :
         {entry.protocol, entry.type, entry.subType, entry.port, entry.direction, entry.logType}) {
        text << number;
    }
    text << entry.processPath << entry.processInfo;
    return text;
}

}  // namespace

int qmaSend(const CCmdProtocol& text) noexcept {
    WRB_LOG(kLogDebug, L"[caClient] Send %s", text.Text().data());
    return wrb::SendToService(kAgent, WRB_HERE, text);
}

int qmaSendRtsStatusChange(uint32_t status) noexcept {
    return wrb::GuardCall(WRB_HERE, L"qmaSendRtsStatusChange", [&] {
        CCmdProtocol text;
        text << kQmRtsStatusChange << status;
        return qmaSend(text);
    });
}

int qmaSendFirewallLog(const wrb::FirewallLogEntry& entry) noexcept {
    return wrb::GuardCall(WRB_HERE, L"qmaSendFirewallLog", [&] { return qmaSend(MakeFirewallLog(entry)); });
}
