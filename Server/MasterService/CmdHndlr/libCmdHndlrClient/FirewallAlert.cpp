#include "FirewallAlert.h"

#include "DebugLog.h"
#include "SRWLock.h"

namespace {

CWrbSRWLock g_lock;
wrb::tagFirewallAlertTotals g_totals WRB_GUARDED_BY(g_lock) = {};

wrb::tagFirewallAlertTotals Add(uint32_t first, uint32_t second, uint32_t third) noexcept {
    const CExclusiveGuard guard(g_lock);
    ++g_totals.logs;
    g_totals.sums[0] += first;
    g_totals.sums[1] += second;
    g_totals.sums[2] += third;
    return g_totals;
}

}  // namespace

wrb::tagFirewallAlertTotals wrb::FirewallAlertTotals() {
    const CSharedGuard guard(g_lock);
    return g_totals;
}

void InsertOneLog(uint32_t first, uint32_t second, uint32_t third, const wchar_t* timeStamp) noexcept {
    const wrb::tagFirewallAlertTotals totals = Add(first, second, third);
    WRB_LOG('D', L"%s - at %s: %u, %u, %u; in %I64u logs: %I64u, %I64u, %I64u", L"InsertOneLog", timeStamp, first,
            second, third, totals.logs, totals.sums[0], totals.sums[1], totals.sums[2]);
}
