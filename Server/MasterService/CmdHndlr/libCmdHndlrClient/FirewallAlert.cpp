#include "FirewallAlert.h"

#include <exception>

#include "AlertNotifier.h"
#include "DebugLog.h"
#include "INICache.h"
#include "LiveBoard.h"

namespace {

constexpr wchar_t kFunction[] = L"InsertOneLog";

wrb::AlertNotifier& TheNotifier() {
    static wrb::AlertNotifier notifier(kFunction, wrb::SystemClock(), ScanIniCache(), wrb::WriteAlertEvent,
                                       [](const wrb::LiveAlerts& alerts) { wrb::TheLiveBoard().Show(alerts); });
    return notifier;
}

}  // namespace

void InsertOneLog(uint32_t intrusions, uint32_t rules, uint32_t total, const wchar_t* timeStamp) noexcept {
    try {
        if (const auto sums = TheNotifier().Add({intrusions, rules, total}, timeStamp)) {
            WRB_LOG(kLogDebug, L"%s - at %s: %u, %u, %u; in %I64u logs: %I64u, %I64u, %I64u", kFunction, timeStamp,
                    intrusions, rules, total, sums->reports, sums->counts[0], sums->counts[1], sums->counts[2]);
        }
    } catch (const std::exception& error) {
        WRB_LOG(kLogError, L"%s - %S", kFunction, error.what());
    }
}
