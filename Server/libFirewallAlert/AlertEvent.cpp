#include "AlertEvent.h"

#include "EventLog.h"

namespace wrb {

uint32_t WriteAlertEvent(const AlertEvent& event) {
    const std::wstring texts[] = {event.windowSeconds, event.sums, event.timeStamp};
    return WriteEvent(kHandlerSource, WRB_EVENT_FIREWALL_ALERT, texts);
}

}  // namespace wrb
