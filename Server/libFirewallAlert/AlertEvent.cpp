#include "AlertEvent.h"

#include <windows.h>

#include <iterator>

#include "AlertMessages.h"
#include "Handle.h"

namespace wrb {
namespace {

struct EventSourceTraits {
    using Type = HANDLE;
    static HANDLE Empty() noexcept { return nullptr; }
    static void Close(HANDLE source) noexcept { DeregisterEventSource(source); }
};

}  // namespace

uint32_t WriteAlertEvent(const AlertEvent& event) {
    const UniqueHandle<EventSourceTraits> source(RegisterEventSourceW(nullptr, kEventSource));
    if (!source) {
        return GetLastError();
    }
    const wchar_t* texts[] = {event.windowSeconds.c_str(), event.sums.c_str(), event.timeStamp.c_str()};
    const BOOL done = ReportEventW(source.Get(), EVENTLOG_WARNING_TYPE, 0, WRB_EVENT_FIREWALL_ALERT, nullptr,
                                   static_cast<WORD>(std::size(texts)), 0, texts, nullptr);
    return done ? ERROR_SUCCESS : GetLastError();
}

}  // namespace wrb
